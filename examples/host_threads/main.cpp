// Preprocesses files and has a script check the results, each file on a thread of its own.
#include <vc_qxparser.h>

#include <wx/init.h>
#include <wx/log.h>

#include <cstdio>
#include <thread>
#include <vector>

struct Job
{
    wxString name;
    wxString result;
    wxString log;
    bool done = false;
};

/// Keeps what the calling thread logs, for as long as this object lives.
class JobLog : public wxLog
{
public:
    explicit JobLog(Job& job) : m_job(job), m_previous(wxLog::SetThreadActiveTarget(this)) {}
    ~JobLog() override { wxLog::SetThreadActiveTarget(m_previous); }

protected:
    void DoLogRecord(wxLogLevel, const wxString& text, const wxLogRecordInfo&) override { m_job.log << text << "\n"; }

private:
    Job& m_job;
    wxLog* m_previous;
};

bool Preprocess(Job& job)
{
    wxString text;
    if (!CDir().OpenFile(job.name).Read(text)) {
        wxLogError(wxS("%s: cannot be read"), job.name);
        return false;
    }
    CPreprocessorLimits limits;
    limits.loopPasses = 1000;
    CPreprocessor preprocessor(nullptr, true);
    preprocessor.SetLimits(limits);
    CParser parser(&preprocessor);
    if (parser.Parse(text, job.name, nullptr, false) != 0) {
        wxString message;
        const CParserUnit* unit = nullptr;
        parser.GetLastError(&message, &unit);
        wxLogError(wxS("%s: %s"), unit ? unit->GetContext() : job.name, message);
        return false;
    }
    parser.GetLastBlock(0)->GetBuffer(job.result, false);
    return true;
}

/// Lets the script's function `check` throw what is wrong with a text.
bool Check(const wxString& rules, const wxString& text)
{
    qxjsMinimal global; // outlives the context that uses it
    CJScript script(nullptr);
    script.SetTimeLimit(1000);
    script.SetMemoryLimit(64 << 20);
    return script.SetGlobal(global.GetJSLink(), wxS("Global")) && script.Evaluate(rules, nullptr) &&
           script.Call(wxS("check"), global.GetJSLink(), text);
}

int main(int argc, char** argv)
{
    const wxInitializer wx;
    wxString rules;
    if (argc < 2 || !CDir().OpenFile(FromSystemName(argv[1])).Read(rules))
        return std::fprintf(stderr, "usage: host_threads RULES FILE...\n"), 2;

    std::vector<Job> jobs;
    for (int i = 2; i < argc; ++i)
        jobs.push_back({FromSystemName(argv[i]), {}, {}});
    std::vector<std::thread> threads;
    for (Job& job : jobs) {
        threads.emplace_back([&job, &rules] {
            const JobLog log(job);
            job.done = Preprocess(job) && Check(rules, job.result);
        });
    }
    for (std::thread& thread : threads)
        thread.join(); // its context has ended with it

    int status = 0;
    for (const Job& job : jobs) {
        std::printf("== %s: %s\n%s", ToUtf8(job.name).c_str(), job.done ? "good" : "bad",
                    ToUtf8(job.done ? job.result : job.log).c_str());
        status |= job.done ? 0 : 1;
    }
    return status;
}
