#ifndef RATIOREPORTER_H
#define RATIOREPORTER_H

#include <benchmark/benchmark.h>

#include <cstdio>
#include <limits>
#include <map>
#include <string>

/**
 * Prints, after the usual table, how the library compares with its peers.
 *
 * Benchmarks are named function/implementation/case; each `own` is divided by every other implementation of
 * the same function and case. Taken is the fastest of the repetitions, as a shared machine only ever adds
 * time.
 */
class RatioReporter : public benchmark::ConsoleReporter {
public:
    RatioReporter() : ConsoleReporter(OO_Tabular) { }

    void ReportRuns(const std::vector<Run> &runs) override
    {
        ConsoleReporter::ReportRuns(runs);
        for (const Run &run : runs) {
            if (run.run_type == Run::RT_Iteration && !run.error_occurred)
                record(run.run_name.function_name, run.GetAdjustedCPUTime());
        }
    }

    void Finalize() override
    {
        std::printf("\nownTime / peerTime, of the fastest repetitions\n");
        for (const auto &[name, times] : m_times) {
            for (const auto &[implementation, time] : times) {
                if (implementation != "own" && times.count("own") != 0)
                    std::printf("%6.3f  %s  of %s\n", times.at("own") / time, name.c_str(),
                                implementation.c_str());
            }
        }
    }

    /// The fastest time of a benchmark; 0 if it has not run.
    double fastest(const std::string &function, const std::string &implementation,
                   const std::string &what) const
    {
        const auto times = m_times.find(function + '/' + what);
        if (times == m_times.end() || times->second.count(implementation) == 0)
            return 0;
        return times->second.at(implementation);
    }

private:
    void record(const std::string &name, double time)
    {
        const auto first = name.find('/');
        const auto second = name.find('/', first + 1);
        if (second == std::string::npos)
            return;
        const std::string implementation = name.substr(first + 1, second - first - 1);
        auto &fastest = m_times[name.substr(0, first) + name.substr(second)];
        const auto position = fastest.emplace(implementation, time).first;
        position->second = std::min(position->second, time);
    }

    std::map<std::string, std::map<std::string, double>> m_times;
};

#endif
