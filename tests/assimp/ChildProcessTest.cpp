// SPDX-License-Identifier: MIT
// Work in a process of its own, and the way of records between two processes.
#include "assimp/ChildProcess.h"
#include "assimp/PackedCharacter.h"

#include <gmock/gmock.h>

#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <unistd.h>

namespace skindesk::test {
namespace {

using assimp::ChildLimits;
using assimp::RunInChild;
using testing::HasSubstr;
using Bytes = std::vector<std::uint8_t>;

constexpr ChildLimits ROOMY{std::uint64_t{1} << 30, 60, 60};

TEST(ChildProcess, AnswersWithWhatTheWorkMade)
{
    Bytes large(std::size_t{5} << 20);
    for (std::size_t i = 0; i < large.size(); ++i) {
        large[i] = static_cast<std::uint8_t>(i * 7 + i / 256);
    }
    EXPECT_EQ(RunInChild([&] { return large; }, ROOMY).bytes, large);
    const assimp::ChildResult nothing = RunInChild([] { return Bytes{}; }, ROOMY);
    EXPECT_TRUE(nothing.bytes.empty());
    EXPECT_EQ(nothing.failure, "");
}

TEST(ChildProcess, ThatBreaksDownIsWordsHere)
{
    EXPECT_THAT(RunInChild(
                    []() -> Bytes {
                        ::raise(SIGSEGV);
                        return {};
                    },
                    ROOMY)
                    .failure,
                HasSubstr("broke down: "));
    EXPECT_THAT(RunInChild([]() -> Bytes { std::abort(); }, ROOMY).failure, HasSubstr("broke down: "));
    EXPECT_EQ(RunInChild([]() -> Bytes { throw std::runtime_error("no"); }, ROOMY).failure, "ended without an answer");
    EXPECT_EQ(RunInChild([]() -> Bytes { ::_exit(0); }, ROOMY).failure, "ended without an answer");
}

TEST(ChildProcess, ThatTakesTooLongIsEnded)
{
    ChildLimits busy = ROOMY;
    busy.processorSeconds = 1;
    EXPECT_THAT(RunInChild(
                    []() -> Bytes {
                        while (::getpid() > 0) {
                        }
                        return {};
                    },
                    busy)
                    .failure,
                testing::StrEq("took too long"));
    ChildLimits waiting = ROOMY;
    waiting.waitSeconds = 1;
    EXPECT_EQ(RunInChild(
                  []() -> Bytes {
                      while (true) {
                          ::pause();
                      }
                  },
                  waiting)
                  .failure,
              "took too long");
}

TEST(ChildProcess, ThatWantsMoreMemoryThanItMayHaveIsEnded)
{
    ChildLimits tight = ROOMY;
    tight.moreMemory = std::uint64_t{64} << 20;
    EXPECT_NE(RunInChild([] { return Bytes(std::size_t{1} << 30, 1); }, tight).failure, "");
}

TEST(ChildProcess, ChangesNothingHere)
{
    int mine = 1;
    EXPECT_EQ(RunInChild(
                  [&mine] {
                      mine = 2;
                      return Bytes(1, static_cast<std::uint8_t>(mine));
                  },
                  ROOMY)
                  .bytes,
              Bytes(1, 2));
    EXPECT_EQ(mine, 1);
}

imports::NewCharacter MakeFullCharacter()
{
    imports::NewCharacter c;
    c.generator = "test";
    c.nodes.resize(3);
    c.nodes[0].name = "a";
    c.nodes[1].matrix = std::array<double, 16>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
    c.nodes[2].parent = 1;
    c.nodes[2].mesh = 0;
    c.meshes.resize(2);
    c.meshes[0].positions = {1, 2, 3};
    c.meshes[0].triangles.push_back({{0, 0, 0}, 1});
    c.meshes[0].morphTargets.push_back({"smile", {0, 1, 0}});
    c.meshes[0].influenceOffsets = {0, 1};
    c.meshes[0].influenceJoints = {1};
    c.meshes[0].influenceWeights = {0.5F};
    c.meshes[1].nurbs.emplace().knots[1] = {0, 0, 1, 1};
    c.skins.push_back({"skin", {0, 1}, {{}, {}}});
    c.animations.push_back({"walk", {{1, gltf::AnimatedProperty::Scale, gltf::Interpolation::Step, {0}, {1, 1, 1}}}});
    c.materials.push_back({"red", {1, 0, 0, 1}, true});
    c.warnings = {"one", "two"};
    return c;
}

TEST(PackedCharacter, ComesBackWhole)
{
    imports::NewCharacter character = MakeFullCharacter();
    const Bytes packed = assimp::PackCharacter(character);
    imports::NewCharacter back = assimp::UnpackCharacter(packed);
    EXPECT_EQ(assimp::PackCharacter(back), packed);
    EXPECT_EQ(back.nodes[1].matrix, character.nodes[1].matrix);
    EXPECT_EQ(back.meshes[0].morphTargets[0].name, "smile");
    EXPECT_EQ(back.meshes[1].nurbs->knots[1], character.meshes[1].nurbs->knots[1]);
    EXPECT_EQ(back.animations[0].channels[0].values, character.animations[0].channels[0].values);
    EXPECT_EQ(back.warnings, character.warnings);
}

TEST(PackedCharacter, CutAnywhereOrTooLongIsRefusedWithoutAskingForMemory)
{
    imports::NewCharacter character = MakeFullCharacter();
    const Bytes packed = assimp::PackCharacter(character);
    for (std::size_t length = 0; length < packed.size(); ++length) {
        EXPECT_THROW(static_cast<void>(assimp::UnpackCharacter({packed.data(), length})), std::runtime_error);
    }
    Bytes longer = packed;
    longer.push_back(0);
    EXPECT_THROW(static_cast<void>(assimp::UnpackCharacter(longer)), std::runtime_error);
    // A count of 2^56 elements.
    Bytes huge = packed;
    huge[7] = 1;
    EXPECT_THROW(static_cast<void>(assimp::UnpackCharacter(huge)), std::runtime_error);
}

} // namespace
} // namespace skindesk::test
