#pragma once

#include "Allocations.h"

#include <benchmark/benchmark.h>

namespace bench {

/// Runs `body` once an iteration and reports how often it allocated, as the mean of the iterations.
template <typename Body>
void countedLoop(benchmark::State& state, Body&& body) {
    body();  // warm
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
