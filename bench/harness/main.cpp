#include "Candidates.h"
#include "Client.h"
#include "Table.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <map>
#include <string>
#include <vector>

namespace {

struct Options {
    std::string build = "build/release";
    std::string folder;
    bench::Api api = bench::Api::OPENGL;
    int rounds = 7;
    std::vector<std::string> modes;
    std::vector<std::string> without;
    bool isUncounted = false;
    bool isObserved = false;
};

bool contains(const std::vector<std::string>& texts, const std::string& text) {
    return std::find(texts.begin(), texts.end(), text) != texts.end();
}

/// Runs all rounds of one mode: the candidates take turns, and each round begins with the next of them.
bool measure(const Options& options, const bench::Client& client, const bench::Mode& mode,
             const std::vector<bench::Candidate>& candidates, std::vector<bench::Samples>& rows) {
    const std::size_t count = candidates.size();
    for (int round = 0; round < options.rounds; ++round) {
        std::cerr << "\r" << mode.title << ": round " << round + 1 << " of " << options.rounds << std::flush;
        for (std::size_t turn = 0; turn < count; ++turn) {
            const std::size_t i = (static_cast<std::size_t>(round) + turn) % count;
            bench::Times times;
            if (!client.measure(candidates[i], mode, times)) {
                return false;
            }
            rows[i].swap.push_back(times.swap);
            rows[i].frame.push_back(times.frame);
            rows[i].p50.push_back(bench::percentile(times.intervals, 0.50));
            rows[i].p95.push_back(bench::percentile(times.intervals, 0.95));
            rows[i].p99.push_back(bench::percentile(times.intervals, 0.99));
        }
    }
    std::cerr << '\n';
    return true;
}

/// Fails when an overlay changes nothing in the picture: its figures would mean nothing.
bool checkPictures(const bench::Client& client, const bench::Mode& mode,
                   const std::vector<bench::Candidate>& candidates, std::vector<bench::Samples>& rows) {
    for (std::size_t i = 1; i < candidates.size(); ++i) {
        if (!client.compare(candidates.front(), candidates[i], mode, rows[i].changed)) {
            return false;
        }
        if (rows[i].changed == 0.0) {
            std::cerr << candidates[i].name << ": nothing of it is in the picture\n";
            return false;
        }
    }
    return true;
}

bool count(const bench::Client& client, const bench::Mode& mode,
           const std::vector<bench::Candidate>& candidates, std::vector<bench::Samples>& rows) {
    for (std::size_t i = 0; i < candidates.size(); ++i) {
        std::cerr << mode.title << ": counting the instructions of " << candidates[i].name << '\n';
        if (!client.count(candidates[i], mode, rows[i].instructions)) {
            return false;
        }
    }
    return true;
}

std::vector<bench::Candidate> chosenCandidates(const Options& options, const std::string& runtime) {
    std::vector<bench::Candidate> chosen = bench::candidates(options.api, options.build, runtime);
    chosen.erase(std::remove_if(chosen.begin() + 1, chosen.end(),
                                [&](const bench::Candidate& c) { return contains(options.without, c.name); }),
                 chosen.end());
    if (options.isObserved) {
        const auto ours = std::find_if(chosen.begin(), chosen.end(),
                                       [](const bench::Candidate& c) { return c.name == bench::OURS; });
        if (ours != chosen.end()) {
            const std::vector<bench::Candidate> more = bench::observed(*ours, options.build);
            chosen.insert(chosen.end(), more.begin(), more.end());
        }
    }
    return chosen;
}

bool runAll(const Options& options) {
    const bool isVulkan = options.api == bench::Api::VULKAN;
    const std::string program =
        options.build + "/bin/kordanix-" + (isVulkan ? "vulkan" : "opengl") + "-client";
    const std::string runtime = options.folder + "/runtime";
    std::filesystem::create_directories(options.folder);
    if (!contains(options.without, bench::OURS) &&
        !bench::enableOurs(options.api, options.build, runtime, program)) {
        return false;
    }
    const bench::Client client(program, options.folder);
    const std::vector<bench::Candidate> candidates = chosenCandidates(options, runtime);
    std::vector<std::pair<std::string, std::vector<bench::Samples>>> results;
    for (const bench::Mode& mode : bench::modes(options.api)) {
        if (!options.modes.empty() && !contains(options.modes, mode.name)) {
            continue;
        }
        std::vector<bench::Samples> rows(candidates.size());
        std::transform(candidates.begin(), candidates.end(), rows.begin(),
                       [](const bench::Candidate& candidate) {
                           bench::Samples samples;
                           samples.candidate = candidate.name;
                           return samples;
                       });
        if (!measure(options, client, mode, candidates, rows) ||
            (mode.hasPixels && !checkPictures(client, mode, candidates, rows)) ||
            (!options.isUncounted && mode.pace == 0 && !count(client, mode, candidates, rows))) {
            return false;
        }
        mode.pace > 0 ? bench::printPacing(std::cout, mode, rows) : bench::printTable(std::cout, mode, rows);
        if (mode.hasTargets && !options.isUncounted) {
            bench::printTargets(std::cout, mode, rows);
        }
        results.emplace_back(mode.name, std::move(rows));
    }
    bench::writeRounds(options.folder + "/rounds.json", results);
    return true;
}

}  // namespace

/// Exit status 1: something did not run, or an overlay was missing. The figures do not affect it.
int main(int argc, char** argv) {
    CLI::App app{"Measures what overlays cost a program, on the display of the environment."};
    Options options;
    const std::map<std::string, bench::Api> apis{{"opengl", bench::Api::OPENGL},
                                                 {"vulkan", bench::Api::VULKAN}};
    app.add_option("api", options.api, "opengl or vulkan")->transform(CLI::CheckedTransformer(apis));
    app.add_option("--build", options.build, "The build folder")->check(CLI::ExistingDirectory);
    app.add_option("--folder", options.folder, "Where the files of the runs go");
    app.add_option("--rounds", options.rounds, "How often each is measured")->check(CLI::PositiveNumber);
    app.add_option("--mode", options.modes, "Only these: free, rate, thread, pixels, figures, pacing");
    app.add_option("--without", options.without, "Overlays to leave out, by their names in the table");
    app.add_flag("--observed", options.isObserved, "Also ours while it is watched, and while it is logged");
    app.add_flag("--no-instructions", options.isUncounted, "Leave callgrind out");
    CLI11_PARSE(app, argc, argv);
    options.build = std::filesystem::absolute(options.build);
    if (options.folder.empty()) {
        options.folder = options.api == bench::Api::VULKAN ? "build/bench-vulkan" : "build/bench-opengl";
    }
    options.folder = std::filesystem::absolute(options.folder);
    return runAll(options) ? EXIT_SUCCESS : EXIT_FAILURE;
}
