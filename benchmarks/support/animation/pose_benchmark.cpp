// Poses beside the same work done with glm, bone by bone, in the same run. The rotations that glm works on are unpacked
// beforehand; ours come from the frames as they are stored. A memory copy of what a pose is made from and of what it
// holds shows what the machine can do.

#include "benchmarks/support/animation/made_animation.h"

#include <benchmark/benchmark.h>
#include <cmath>
#include <cstring>
#include <glm/ext/matrix_transform.hpp>
#include <glm/ext/quaternion_float.hpp>
#include <glm/gtc/quaternion.hpp>
#include <random>

using namespace SUPPORT;

namespace {

constexpr unsigned rounds = 200;  // of a whole pose in one measurement

std::vector<glm::quat> unpacked(ANIMATION_FRAME const &frame)
{
    std::vector<glm::quat> result;
    for (PACKED_QUATERNION const &packed : frame.rotations) {
        QUATERNION const q = unpack_quaternion(packed);
        result.emplace_back(q.w, q.x, q.y, q.z);
    }
    return result;
}

// The time of copying what one pose reads and writes, once a round.
double copy_seconds()
{
    static std::vector<char> const from(made_bones * (2 * 8 + 2 * 12 + 16 + 12) / 2, 'x');
    static std::vector<char> to(from.size());
    return seconds_of([] {
        for (unsigned round = 0; round < rounds; ++round) {
            std::memcpy(to.data(), from.data(), from.size());
            benchmark::DoNotOptimize(to.data());
            benchmark::ClobberMemory();
        }
    });
}

double farthest(POSE const &pose, std::vector<glm::quat> const &theirs)
{
    double distance = 0;
    for (unsigned i = 0; i < made_bones; ++i) {
        QUATERNION const &q = pose.rotations[i];
        double const sign = q.x * theirs[i].x + q.y * theirs[i].y + q.z * theirs[i].z + q.w * theirs[i].w < 0 ? -1 : 1;
        distance = std::max({distance, std::abs(sign * q.x - theirs[i].x), std::abs(sign * q.y - theirs[i].y),
                             std::abs(sign * q.z - theirs[i].z), std::abs(sign * q.w - theirs[i].w)});
    }
    return distance;
}

void report(benchmark::State &state, std::vector<double> const &ours, std::vector<double> const &theirs,
            std::vector<double> const &copy)
{
    double const bones = double(rounds) * made_bones * 1e-9;
    state.counters["ours_ns_per_bone"] = least(ours) / bones;
    state.counters["theirs_ns_per_bone"] = least(theirs) / bones;
    state.counters["to_theirs"] = least(ours) / least(theirs);
    state.counters["to_copy"] = least(ours) / least(copy);
}

// Translations and rotations of two frames become a pose; glm does one spherical interpolation a bone and no more.
void Blend(benchmark::State &state, std::uint32_t mode)
{
    MADE_ANIMATION const made = make_animation();
    ANIMATION_FRAME const &a = *made.clip->frames[3], &b = *made.clip->frames[100];
    std::vector<glm::quat> const from = unpacked(a), to = unpacked(b);
    std::vector<glm::quat> results(made_bones);
    SCRATCH_ALLOCATOR scratch;
    std::vector<double> ours, theirs, copy;
    for (auto _ : state) {
        ours.push_back(seconds_of([&] {
            for (unsigned round = 0; round < rounds; ++round) {
                scratch.reset();
                POSE pose;
                blend_frames(pose, a, b, 0.3f, mode, made.skeleton.get(), &scratch);
                benchmark::ClobberMemory();
            }
        }));
        theirs.push_back(seconds_of([&] {
            for (unsigned round = 0; round < rounds; ++round) {
                for (unsigned i = 0; i < made_bones; ++i)
                    results[i] = glm::slerp(from[i], to[i], 0.3f);
                benchmark::ClobberMemory();
            }
        }));
        copy.push_back(copy_seconds());
        state.SetIterationTime(ours.back());
    }
    report(state, ours, theirs, copy);
    POSE pose;
    blend_frames(pose, a, b, 0.3f, BLEND_SPHERICAL, made.skeleton.get(), nullptr);
    if (farthest(pose, results) > 1e-3)  // the two differ in when they go straight
        state.SkipWithError("the poses differ");
}

void WorldMatrices(benchmark::State &state)
{
    MADE_ANIMATION const made = make_animation();
    POSE const pose = pose_at(*made.clip, 1, BLEND_LINEAR, nullptr, nullptr);
    std::vector<glm::quat> rotations;
    std::vector<glm::vec3> translations;
    std::vector<int> parents;
    for (unsigned i = 0; i < made_bones; ++i) {
        QUATERNION const &q = pose.rotations[i];
        VECTOR3 const &t = pose.translations[i];
        rotations.emplace_back(q.w, q.x, q.y, q.z);
        translations.emplace_back(t.x, t.y, t.z);
        parents.push_back(pose.skeleton[i].parent);
    }
    std::vector<glm::mat4> results(made_bones);
    glm::mat4 const root(1);
    SCRATCH_ALLOCATOR scratch;
    std::span<MATRIX34> matrices;
    std::vector<double> ours, theirs, copy;
    for (auto _ : state) {
        ours.push_back(seconds_of([&] {
            for (unsigned round = 0; round < rounds; ++round) {
                scratch.reset();
                matrices = world_matrices(pose, 0, {}, scratch);
                benchmark::ClobberMemory();
            }
        }));
        theirs.push_back(seconds_of([&] {
            for (unsigned round = 0; round < rounds; ++round) {
                for (unsigned i = 0; i < made_bones; ++i) {
                    glm::mat4 const local =
                        glm::translate(glm::mat4(1), translations[i]) * glm::mat4_cast(rotations[i]);
                    results[i] = (parents[i] < 0 ? root : results[std::size_t(parents[i])]) * local;
                }
                benchmark::ClobberMemory();
            }
        }));
        copy.push_back(copy_seconds());
        state.SetIterationTime(ours.back());
    }
    report(state, ours, theirs, copy);
    for (unsigned i = 0; i < made_bones; ++i)
        for (unsigned row = 0; row < 3; ++row)
            for (unsigned column = 0; column < 4; ++column)
                if (!(std::abs(matrices[i][row][column] - results[i][int(column)][int(row)]) < 1e-3f))
                    state.SkipWithError("the matrices differ");
}

// A pose somewhere in the clip beside that of the frame after the last one, each with its memory not yet at hand.
void RandomTime(benchmark::State &state)
{
    MADE_ANIMATION const made = make_animation();
    std::mt19937 random(2);
    std::vector<float> in_order, anywhere;
    for (unsigned i = 0; i + 1 < made_frames; ++i)
        in_order.push_back((float(i) + 0.3f) / 30);
    anywhere = in_order;
    std::shuffle(anywhere.begin(), anywhere.end(), random);
    SCRATCH_ALLOCATOR scratch;
    double sum = 0;
    auto const play = [&](std::vector<float> const &times) {
        return seconds_of([&] {
            sum = 0;
            for (float time : times) {
                scratch.reset();
                POSE const pose = pose_at(*made.clip, time, BLEND_SPHERICAL, nullptr, &scratch);
                sum += double(pose.rotations[made_bones - 1].w);
            }
        });
    };
    std::vector<double> ordered, shuffled, copy;
    for (auto _ : state) {
        ordered.push_back(play(in_order));
        double const in_order_sum = sum;
        shuffled.push_back(play(anywhere));
        if (!(std::abs(sum - in_order_sum) < 1e-6))
            state.SkipWithError("the poses differ");
        copy.push_back(copy_seconds());
        state.SetIterationTime(shuffled.back());
    }
    double const poses = double(in_order.size());
    state.counters["random_us"] = least(shuffled) / poses * 1e6;
    state.counters["next_us"] = least(ordered) / poses * 1e6;
    state.counters["random_to_next"] = least(shuffled) / least(ordered);
    state.counters["to_copy"] = (least(shuffled) / poses) / (least(copy) / rounds);
}

}  // namespace

BENCHMARK_CAPTURE(Blend, Spherical, BLEND_SPHERICAL)->UseManualTime()->Iterations(200);
BENCHMARK_CAPTURE(Blend, Linear, BLEND_LINEAR)->UseManualTime()->Iterations(200);
BENCHMARK(WorldMatrices)->UseManualTime()->Iterations(200);
BENCHMARK(RandomTime)->UseManualTime()->Iterations(100);
