// Writes the manual page of qxp and its completions for shells, from the tables of its options.
//
//     qxp_reference FOLDER

#include "qxp/application.h"
#include "qxp/reference/reference.h"

#include <cstdio>
#include <fstream>

int main(int argc, char** argv)
{
    if (argc != 2)
        return std::fputs("One folder to write to must be given.\n", stderr), 2;
    Application application;
    const ProgramModel model = MakeModel(application.app);
    const std::pair<const char*, std::string> files[] = {{"qxp.1", MakeManPage(model, QXP_VERSION)},
                                                         {"qxp.bash", MakeBashCompletion(model)},
                                                         {"_qxp", MakeZshCompletion(model)},
                                                         {"qxp.fish", MakeFishCompletion(model)}};
    for (const auto& [name, text] : files) {
        const std::string path = std::string(argv[1]) + "/" + name;
        std::ofstream stream(path, std::ios::binary);
        stream << text;
        stream.close();
        if (!stream)
            return std::fprintf(stderr, "%s cannot be written.\n", path.c_str()), 1;
    }
}
