// Timing of a work beside those of others: all take turns in one run, so that a noisy machine disturbs them alike, and
// each keeps its least time.
#pragma once

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <map>
#include <string>

class SIDE_BY_SIDE {
public:
    template <class WORK>
    void time(std::string const &name, WORK const &work)
    {
        auto const start = std::chrono::steady_clock::now();
        work();
        std::chrono::duration<double> const taken = std::chrono::steady_clock::now() - start;
        auto const [entry, first] = least.try_emplace(name, taken.count());
        if (!first)
            entry->second = std::min(entry->second, taken.count());
    }

    // Each work's least time in microseconds.
    void report(benchmark::State &state) const
    {
        for (auto const &[name, seconds] : least)
            state.counters[name + "_us"] = seconds * 1e6;
    }

    double ratio(std::string const &work, std::string const &other) const { return least.at(work) / least.at(other); }

private:
    std::map<std::string, double> least;
};
