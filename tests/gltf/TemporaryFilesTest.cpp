// SPDX-License-Identifier: MIT
// Savings that were killed: what they left is cleared away by the next one, and nothing else is.
#include "gltf/TemporaryFiles.h"
#include "GltfBuilder.h"
#include "support/GltfCompare.h"

#include <csignal>
#include <fcntl.h>
#include <functional>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace skindesk::test {
namespace {

using gltf::CharacterFile;
using testing::ElementsAre;
using testing::HasSubstr;

// Lets another process save until the disk, made small for it, is full; the system kills it in the middle of writing.
void SaveAndBeKilled(const CharacterFile& file, const std::string& path)
{
    const pid_t child = ::fork();
    if (child == 0) {
        std::signal(SIGXFSZ, SIG_DFL);
        const rlimit none{0, 0};
        ::setrlimit(RLIMIT_CORE, &none);
        const rlimit small{100, 100};
        ::setrlimit(RLIMIT_FSIZE, &small);
        try {
            static_cast<void>(gltf::WriteCharacter(file, {}, {}, path));
        } catch (...) {
            ::_exit(1);
        }
        ::_exit(0);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status));
}

// The number of a process that was and is no more.
pid_t GoneProcess()
{
    const pid_t child = ::fork();
    if (child == 0) {
        ::_exit(0);
    }
    ::waitpid(child, nullptr, 0);
    return child;
}

TEST(TemporaryFile, OfAKilledSavingIsRemovedByTheNextOne)
{
    const CharacterFile file = MakeValidCharacter().Read();
    const TemporaryFolder folder;
    WriteBytes(folder / "a.glb", {1, 2, 3});
    SaveAndBeKilled(file, folder / "a.glb");
    EXPECT_EQ(ReadBytes(folder / "a.glb"), (std::vector<std::uint8_t>{1, 2, 3}));
    ASSERT_EQ(folder.Names().size(), 2u);
    EXPECT_THAT(folder.Names()[0], testing::AllOf(testing::StartsWith(".a.glb."), testing::EndsWith("-0.tmp")));
    static_cast<void>(gltf::WriteCharacter(file, {}, {}, folder / "a.glb"));
    EXPECT_THAT(folder.Names(), ElementsAre("a.glb"));
}

TEST(TemporaryFile, OfAKilledSavingThroughALinkIsRemovedWhereTheTargetLies)
{
    const CharacterFile file = MakeValidCharacter().Read();
    const TemporaryFolder folder;
    const TemporaryFolder other;
    std::filesystem::create_symlink(other / "real.glb", folder / "link.glb");
    SaveAndBeKilled(file, folder / "link.glb");
    ASSERT_EQ(other.Names().size(), 1u);
    static_cast<void>(gltf::WriteCharacter(file, {}, {}, folder / "link.glb"));
    EXPECT_THAT(other.Names(), ElementsAre("real.glb"));
}

TEST(TemporaryFile, OfAnotherNameOrALivingProcessStays)
{
    const CharacterFile file = MakeValidCharacter().Read();
    const TemporaryFolder folder;
    const std::string gone = std::to_string(GoneProcess());
    const std::string living = std::to_string(::getppid());
    const std::vector<std::string> kept{".a.glb." + living + "-0.tmp",
                                        ".b.glb." + gone + "-0.tmp",
                                        ".a.glb.tmp",
                                        ".a.glb.-0.tmp",
                                        "a.glb." + gone + "-0.tmp",
                                        ".a.glb." + gone + "-x.tmp",
                                        ".xa.glb." + gone + "-0.tmp",
                                        ".a.glb." + gone + "-0.tmp.old"};
    for (const std::string& name : kept) {
        WriteBytes(folder / name, {7});
    }
    const std::vector<std::string> removed{".a.glb." + gone + "-0.tmp", ".a.glb." + gone + "-99.tmp",
                                           ".a.weights-0123456789abcdef.bin." + gone + "-0.tmp",
                                           ".a.glb." + std::to_string(::getpid()) + "-3.tmp"};
    for (const std::string& name : removed) {
        WriteBytes(folder / name, {7});
    }
    std::filesystem::create_directory(folder / (".a.glb." + gone + "-1.tmp"));
    static_cast<void>(gltf::WriteCharacter(file, {}, {}, folder / "a.glb"));
    std::vector<std::string> expected = kept;
    expected.push_back(".a.glb." + gone + "-1.tmp");
    expected.push_back("a.glb");
    EXPECT_THAT(folder.Names(), testing::UnorderedElementsAreArray(expected));
}

TEST(TemporaryFile, ThatIsMarkedAsBeingWrittenStaysThoughNobodyKnowsItsProcess)
{
    const CharacterFile file = MakeValidCharacter().Read();
    const TemporaryFolder folder;
    const std::string name = ".a.glb." + std::to_string(GoneProcess()) + "-0.tmp";
    const int fd = ::open((folder / name).c_str(), O_WRONLY | O_CREAT | O_EXCL, 0600);
    ASSERT_GE(fd, 0);
    gltf::MarkAsBeingWritten(fd);
    static_cast<void>(gltf::WriteCharacter(file, {}, {}, folder / "a.glb"));
    EXPECT_THAT(folder.Names(), ElementsAre(name, "a.glb"));
    ::close(fd);
    static_cast<void>(gltf::WriteCharacter(file, {}, {}, folder / "a.glb"));
    EXPECT_THAT(folder.Names(), ElementsAre("a.glb"));
}

TEST(TemporaryFile, OfANameAsLongAsTheSystemAllowsIsFoundAgain)
{
    const CharacterFile file = MakeValidCharacter().Read();
    const TemporaryFolder folder;
    const std::string name = std::string(240, 'n') + ".glb";
    SaveAndBeKilled(file, folder / name);
    ASSERT_EQ(folder.Names().size(), 1u);
    static_cast<void>(gltf::WriteCharacter(file, {}, {}, folder / name));
    EXPECT_THAT(folder.Names(), ElementsAre(name));
}

TEST(TemporaryFile, OfManyKilledSavingsDoNotPileUp)
{
    const CharacterFile file = MakeValidCharacter().Read();
    const TemporaryFolder folder;
    for (int round = 0; round < 5; ++round) {
        SaveAndBeKilled(file, folder / "a.glb");
    }
    EXPECT_EQ(folder.Names().size(), 1u); // each one cleared away what the one before it left
    static_cast<void>(gltf::WriteCharacter(file, {}, {}, folder / "a.glb"));
    EXPECT_THAT(folder.Names(), ElementsAre("a.glb"));
}

} // namespace
} // namespace skindesk::test
