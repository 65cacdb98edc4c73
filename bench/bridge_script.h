#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

// What the drivers of the bridge run; only the way to the engine differs.   DRIVER MODE N   prints the sum
//
//   call_int    o.add(integer), which returns its argument + 1
//   prop        o.value, which is 3
//   prop_set    o.value = integer, and 1 for each
//   call_str    o.len(string of 20), which takes a copy of the text
//   construct   new Peer().value, the object dropped at once; its native part takes part in events
//   eval        an evaluation of "x * 3 + <number>" from native code, every text different
//   eval_same   an evaluation of "x * 3 + 1" from native code

/// The loop in script that runs the mode's operation for i = 0 to n - 1 and adds it up; empty for evaluations.
inline std::string LoopScript(const std::string& mode, long n)
{
    static const struct
    {
        const char* mode;
        const char* body;
    } kLoops[] = {{"call_int", "o.add(i)"},
                  {"prop", "o.value"},
                  {"prop_set", "(o.value = i, 1)"},
                  {"call_str", "o.len(t[i & 1])"},
                  {"construct", "new Peer().value"}};
    for (const auto& loop : kLoops) {
        if (mode == loop.mode)
            return std::string("(function (n) { var s = 0, t = ['abcdefghijklmnopqrst', 'bcdefghijklmnopqrstu']; "
                               "for (var i = 0; i < n; i++) s += ") +
                   loop.body + "; return s; })(" + std::to_string(n) + ")";
    }
    return std::string();
}

/// Runs a mode with `evaluate(text)`, which gives the number that a text evaluates to; the program's exit status.
template <typename Evaluate> int Drive(int argc, char** argv, Evaluate evaluate)
{
    if (argc != 3)
        return 2;
    const std::string mode = argv[1];
    const long n = std::atol(argv[2]);
    const std::string loop = LoopScript(mode, n);
    double sum = 0;
    if (!loop.empty())
        sum = evaluate(loop);
    else {
        for (long i = 0; i < n; ++i)
            sum += evaluate("x * 3 + " + std::to_string(mode == "eval_same" ? 1L : i));
    }
    std::printf("%.0f\n", sum);
    std::fflush(stdout);
    return 0;
}
