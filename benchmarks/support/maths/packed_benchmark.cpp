// Unpacking and packing of rotations beside memory copies in the same run: of as many bytes in and out together, and
// of as many as the larger side has. 512 rotations are a pose and stay in the nearest cache; 4 million do not fit into
// any.

#include "support/maths/packed_quaternion.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstring>
#include <random>
#include <vector>

using namespace SUPPORT;

namespace {

template <class WORK>
double seconds_of(unsigned rounds, WORK work)
{
    auto const start = std::chrono::steady_clock::now();
    for (unsigned round = 0; round < rounds; ++round) {
        work();
        benchmark::ClobberMemory();
    }
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count() / rounds;
}

double least(std::vector<double> const &times) { return *std::min_element(times.begin(), times.end()); }

void Packed(benchmark::State &state, bool unpack)
{
    std::size_t const count = std::size_t(state.range(0));
    std::mt19937 random(1);
    std::normal_distribution<float> normal;
    std::vector<QUATERNION> quaternions(count);
    for (QUATERNION &q : quaternions)
        q = normalised({normal(random), normal(random), normal(random), normal(random)});
    std::vector<PACKED_QUATERNION> packed(count);
    pack_quaternions(quaternions, packed.data());

    // A copy reads as much as it writes: half of all bytes each.
    std::size_t const bytes = count * (sizeof(QUATERNION) + sizeof(PACKED_QUATERNION));
    std::vector<char> from(bytes, 'x'), to(bytes, 'y');
    unsigned const rounds = unsigned(std::max<std::size_t>(1, 200'000 / count));
    std::vector<double> ours, same_traffic, whole;
    for (auto _ : state) {
        ours.push_back(seconds_of(rounds, [&] {
            if (unpack)
                unpack_quaternions(packed, quaternions.data());
            else
                pack_quaternions(quaternions, packed.data());
        }));
        same_traffic.push_back(seconds_of(rounds, [&] { std::memcpy(to.data(), from.data(), bytes / 2); }));
        whole.push_back(seconds_of(rounds, [&] { std::memcpy(to.data(), from.data(), bytes); }));
        state.SetIterationTime(ours.back());
    }
    state.counters["ns_per_rotation"] = least(ours) / double(count) * 1e9;
    state.counters["to_copy_of_same_traffic"] = least(ours) / least(same_traffic);
    state.counters["to_copy_of_all_bytes"] = least(ours) / least(whole);
    for (std::size_t i = 0; i < count; ++i)
        if (unpack ? quaternions[i] != unpack_quaternion(packed[i]) : packed[i] != pack_quaternion(quaternions[i])) {
            state.SkipWithError("wrong bits");
            break;
        }
}

}  // namespace

BENCHMARK_CAPTURE(Packed, Unpack, true)->Arg(512)->Arg(1 << 22)->UseManualTime()->Iterations(100);
BENCHMARK_CAPTURE(Packed, Pack, false)->Arg(512)->Arg(1 << 22)->UseManualTime()->Iterations(100);
