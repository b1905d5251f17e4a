// Times each pass over each shape of script, in nanoseconds a script byte, and fits its growth.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "base/diagnostics.h"
#include "driver/file.h"
#include "driver/passes.h"
#include "phase1/check_jump_offset_1.h"
#include "phase1/parse_conv_1.h"
#include "phase2/check_jump_offset_2.h"
#include "phase2/data_block.h"
#include "phase2/parse_conv_2.h"
#include "shapes.h"

namespace {

enum class pass : std::uint8_t { loading, phase_1, phase_2, data_blocks, printing };
constexpr const char* pass_names[] = {"loading", "phase_1", "phase_2", "data_blocks", "printing"};

result load(conv& script, const char* path) {
    array<std::uint8_t> buffer;
    if (failed(load_file(buffer, path))) return result::failed;
    conv_set_buffer(script, std::move(buffer));
    return result::ok;
}

result run_phase_1(conv& script) {
    if (failed(parse_conv_1(script))) return result::failed;
    return check_jump_offset_1(script);
}

result run_data_blocks(conv& script) {
    if (failed(set_data_block_type(script)) || failed(parse_data_block(script))) return result::failed;
    return check_jump_offset_2(script);
}

// Everything up to `last`; only the last pass is timed.
result run_up_to(pass last, conv& script, const char* path, int null, benchmark::State& state) {
    static writer out;
    for (pass step = pass::loading;; step = static_cast<pass>(static_cast<int>(step) + 1)) {
        if (step == last) state.ResumeTiming();
        result outcome = result::ok;
        switch (step) {
            case pass::loading: outcome = load(script, path); break;
            case pass::phase_1: outcome = run_phase_1(script); break;
            case pass::phase_2: outcome = parse_conv_2(script); break;
            case pass::data_blocks: outcome = run_data_blocks(script); break;
            case pass::printing:
                script.dump = true;
                out.open(null);
                outcome = print_script(script, {&out, "listing"}, {nullptr, nullptr});
                break;
        }
        if (step == last) state.PauseTiming();
        if (step == last || failed(outcome)) return outcome;
    }
}

void time_pass(benchmark::State& state, const script_shape& shape, pass timed) {
    const script_bytes bytes = shape.make(static_cast<std::size_t>(state.range(0)), 1);
    char path[] = "/tmp/varsul-bench-XXXXXX";
    const file script_file(mkstemp(path));
    const file null(open("/dev/null", O_WRONLY | O_CLOEXEC));
    const auto size = static_cast<ssize_t>(bytes.size());
    if (write(script_file.descriptor(), bytes.data(), bytes.size()) != size) state.SkipWithError("can't write script");
    diagnostics.open(null.descriptor());
    options = {};
    options.verbose_level = std::strstr(shape.options, "-V -V") != nullptr ? 2 : 0;
    for (auto _ : state) {
        state.PauseTiming();
        conv script;
        conv_init(script);
        if (failed(run_up_to(timed, script, path, null.descriptor(), state))) state.SkipWithError("the script fails");
        conv_free(script);
        state.ResumeTiming();
    }
    unlink(path);
    state.SetComplexityN(state.range(0));
    state.counters["per_byte"] = benchmark::Counter(
        static_cast<double>(bytes.size()), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

}  // namespace

int main(int argc, char** argv) {
    for (const script_shape& shape : script_shapes()) {
        for (int timed = 0; timed < 5; ++timed) {
            const std::string name = std::string(shape.name) + "/" + pass_names[timed];
            benchmark::RegisterBenchmark(name.c_str(), time_pass, shape, static_cast<pass>(timed))
                ->RangeMultiplier(16)
                ->Range(1 << 16, 1 << 24)
                ->Unit(benchmark::kMillisecond)
                ->Complexity();
        }
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
