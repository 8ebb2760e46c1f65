#include "Redirect.h"
#include "TableReporter.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <string>
#include <vector>

/// Runs every benchmark seven times, in random order, and prints the table. Takes Google Benchmark's options.
/// Returns 1 when a target was missed.
int main(int argc, char** argv) {
    std::vector<std::string> arguments(argv, argv + argc);
    arguments.insert(arguments.begin() + 1, {"--benchmark_repetitions=7", "--benchmark_min_time=0.1",
                                             "--benchmark_enable_random_interleaving=true"});
    std::vector<char*> pointers;
    for (std::string& argument : arguments) {
        pointers.push_back(argument.data());
    }
    int count = static_cast<int>(pointers.size());
    benchmark::Initialize(&count, pointers.data());
    if (benchmark::ReportUnrecognizedArguments(count, pointers.data()) || !bench::createDriverFiles()) {
        return 2;
    }
    bench::TableReporter table;
    benchmark::RunSpecifiedBenchmarks(&table);
    bench::removeDriverFiles();
    return table.areTargetsMet() ? EXIT_SUCCESS : EXIT_FAILURE;
}
