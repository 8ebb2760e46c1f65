#pragma once

#include "Allocations.h"

#include <benchmark/benchmark.h>

namespace bench {

/// Runs `body` in every iteration and reports its allocations, as the mean over the iterations.
template <typename Body>
void countedLoop(benchmark::State& state, Body&& body) {
    body();  // warm-up
    std::size_t allocated = 0;
    for (auto _ : state) {
        const std::size_t before = allocations();
        body();
        allocated += allocations() - before;
    }
    state.counters["allocations"] =
        benchmark::Counter(static_cast<double>(allocated), benchmark::Counter::kAvgIterations);
}

}  // namespace bench
