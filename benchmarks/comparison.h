// Ours against a peer: both run in turn in one process, and the ratio of the medians is printed.
#pragma once

#include <functional>
#include <string>

namespace benchmarks {

/// Adds a comparison.
/// @param job   what is measured ("A-law stereo to mono").
/// @param who   who does it ("ours", "libsndfile"). The first `who` of a job is what the others are
///              the measure for.
/// @param unit  what is counted ("frame").
/// @param run   does the job once and returns how many units it did; 0 is failure.
void Add(const std::string& job, const std::string& who, const std::string& unit,
         std::function<unsigned long long()> run);

/// Runs everything that was added, in turn, and prints a line for each. To be called from main.
int RunAll(int argc, char** argv);

}  // namespace benchmarks
