// SPDX-License-Identifier: MIT
// Saving on a real disk: buffers in texts and files, other folders, links, and what happens when it goes wrong.
#include "GltfBuilder.h"
#include "support/GltfCompare.h"

#include <gmock/gmock.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace skindesk::test {
namespace {

namespace fs = std::filesystem;
using gltf::CharacterEdits;
using gltf::CharacterFile;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;

CharacterEdits EditOf(const CharacterFile& file, double weight = 0.2, std::size_t vertex = 2)
{
    CharacterEdits edits{{WeightsOf(file, 0)}, {}};
    SetRow(edits.models[0], vertex, {{0, weight}, {1, 1 - weight}});
    return edits;
}

// An edit that cannot be written in place: a third joint on a mesh whose joints must get wider does not fit.
CharacterEdits EditWithNewJoint(const CharacterFile& file)
{
    CharacterEdits edits = EditOf(file);
    edits.addedJoints.push_back({0, 0, {2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 1}});
    return edits;
}

double SavedWeight(const std::string& path, std::size_t vertex = 2)
{
    return RowOf(gltf::ReadCharacter(path).meshes[0].influences, vertex).at(0).second;
}

std::string FailureOf(const CharacterFile& file, const CharacterEdits& edits, const std::string& path)
{
    try {
        static_cast<void>(gltf::WriteCharacter(file, edits, {}, path));
        return "";
    } catch (const gltf::FileError& error) {
        EXPECT_EQ(error.path(), path);
        return error.what();
    }
}

std::string NameOfWeightBuffer(const TemporaryFolder& folder, const std::string& beginning)
{
    for (const std::string& name : folder.Names()) {
        if (name.starts_with(beginning + ".weights-")) {
            return name;
        }
    }
    return "";
}

TEST(SaveText, AnUntouchedTextWithOddSpacingIsTheSameBytes)
{
    const GltfBuilder b = MakeValidCharacter();
    std::string text = "\xEF\xBB\xBF \t\n" + Json::parse(b.Text()).dump(7, '\t') + "\n\n  ";
    const CharacterFile file = gltf::ReadCharacter(BytesOf(text), "a.gltf");
    const TemporaryFolder folder;
    static_cast<void>(gltf::WriteCharacter(file, {}, {}, folder / "a.gltf"));
    EXPECT_EQ(ReadBytes(folder / "a.gltf"), BytesOf(text));
}

TEST(SaveText, WeightsInADataUriAreOverwrittenDigitByDigit)
{
    const std::vector<std::uint8_t> bytes = MakeValidCharacter().Text();
    const CharacterFile file = gltf::ReadCharacter(bytes, "a.gltf");
    const TemporaryFolder folder;
    static_cast<void>(gltf::WriteCharacter(file, EditOf(file), {}, folder / "a.gltf"));
    const std::vector<std::uint8_t> saved = ReadBytes(folder / "a.gltf");
    ASSERT_EQ(saved.size(), bytes.size());
    std::size_t different = 0;
    for (std::size_t i = 0; i < saved.size(); ++i) {
        different += saved[i] != bytes[i] ? 1 : 0;
    }
    EXPECT_LE(different, 4u * ((8 + 16) / 3 + 2)); // joints and weights of one vertex
    EXPECT_THAT(SavedWeight(folder / "a.gltf"), Near(0.2));
}

TEST(SaveText, WhatDoesNotFitGoesIntoANewDataUri)
{
    const CharacterFile file = gltf::ReadCharacter(MakeValidCharacter().Text(), "a.gltf");
    const TemporaryFolder folder;
    WriteBytes(folder / "o.gltf", MakeValidCharacter().Text());
    static_cast<void>(gltf::WriteCharacter(file, EditWithNewJoint(file), {}, folder / "a.gltf"));
    const RawGltf raw = ReadRawGltf(folder / "a.gltf");
    ASSERT_EQ(raw.json["buffers"].size(), 2u);
    EXPECT_THAT(raw.json["buffers"][1]["uri"].get<std::string>(),
                testing::StartsWith("data:application/octet-stream;base64,"));
    EXPECT_THAT(ForeignChanges(ReadRawGltf(folder / "o.gltf"), raw), IsEmpty());
    EXPECT_EQ(gltf::ReadCharacter(folder / "a.gltf").skins[0].joints.size(), 3u);
    EXPECT_THAT(folder.Names(), ElementsAre("a.gltf", "o.gltf"));
}

TEST(SaveText, EscapedDigitsAreNotOverwrittenButReplacedByANewBuffer)
{
    std::string text;
    for (const std::uint8_t c : MakeValidCharacter().Text()) {
        text += c == '/' ? "\\/" : std::string(1, static_cast<char>(c));
    }
    const CharacterFile file = gltf::ReadCharacter(BytesOf(text), "a.gltf");
    const TemporaryFolder folder;
    static_cast<void>(gltf::WriteCharacter(file, EditOf(file), {}, folder / "a.gltf"));
    EXPECT_THAT(SavedWeight(folder / "a.gltf"), Near(0.2));
    EXPECT_EQ(ReadRawGltf(folder / "a.gltf").json["buffers"].size(), 2u);
}

class BufferBesideTheFile : public testing::Test
{
protected:
    BufferBesideTheFile()
    {
        WriteBytes(m_folder / "hero.gltf", m_builder.TextWithFile("data%20one.bin"));
        WriteBytes(m_folder / "data one.bin", m_builder.buffer);
        m_file = gltf::ReadCharacter(m_folder / "hero.gltf");
    }

    TemporaryFolder m_folder;
    GltfBuilder m_builder = MakeValidCharacter();
    CharacterFile m_file;
};

TEST_F(BufferBesideTheFile, IsNeverRewrittenAndWeightsGetAFileOfTheirOwn)
{
    const auto before = fs::last_write_time(m_folder / "data one.bin");
    static_cast<void>(gltf::WriteCharacter(m_file, EditOf(m_file), {}, m_folder / "hero.gltf"));
    EXPECT_EQ(ReadBytes(m_folder / "data one.bin"), m_builder.buffer);
    EXPECT_EQ(fs::last_write_time(m_folder / "data one.bin"), before);
    const std::string weights = NameOfWeightBuffer(m_folder, "hero");
    EXPECT_THAT(m_folder.Names(), ElementsAre("data one.bin", "hero.gltf", weights));
    EXPECT_THAT(SavedWeight(m_folder / "hero.gltf"), Near(0.2));
    EXPECT_EQ(ReadRawGltf(m_folder / "hero.gltf").json["buffers"][1]["uri"], weights);
}

TEST_F(BufferBesideTheFile, ANewSavingReplacesTheWeightFileByOneOfAnotherName)
{
    static_cast<void>(gltf::WriteCharacter(m_file, EditOf(m_file, 0.2), {}, m_folder / "hero.gltf"));
    const std::string first = NameOfWeightBuffer(m_folder, "hero");
    static_cast<void>(gltf::WriteCharacter(m_file, EditOf(m_file, 0.3), {}, m_folder / "hero.gltf"));
    const std::string second = NameOfWeightBuffer(m_folder, "hero");
    EXPECT_NE(first, second);
    EXPECT_THAT(m_folder.Names(), ElementsAre("data one.bin", "hero.gltf", second));
    EXPECT_THAT(SavedWeight(m_folder / "hero.gltf"), Near(0.3));
}

TEST_F(BufferBesideTheFile, OpenedAgainTheWeightFileIsReplacedNotAddedTo)
{
    static_cast<void>(gltf::WriteCharacter(m_file, EditOf(m_file, 0.2), {}, m_folder / "hero.gltf"));
    const std::string first = NameOfWeightBuffer(m_folder, "hero");
    const std::size_t size = ReadBytes(m_folder / first).size();
    const CharacterFile again = gltf::ReadCharacter(m_folder / "hero.gltf");
    static_cast<void>(gltf::WriteCharacter(again, EditOf(again, 0.4), {}, m_folder / "hero.gltf"));
    const std::string second = NameOfWeightBuffer(m_folder, "hero");
    EXPECT_NE(first, second);
    EXPECT_EQ(ReadBytes(m_folder / second).size(), size);
    EXPECT_THAT(m_folder.Names(), ElementsAre("data one.bin", "hero.gltf", second));
    EXPECT_EQ(ReadRawGltf(m_folder / "hero.gltf").json["buffers"].size(), 2u);
    EXPECT_THAT(SavedWeight(m_folder / "hero.gltf"), Near(0.4));

    // The file opened the second time, saved without an edit, needs the weight file that is gone by now.
    static_cast<void>(gltf::WriteCharacter(again, {}, {}, m_folder / "hero.gltf"));
    EXPECT_THAT(m_folder.Names(), ElementsAre("data one.bin", "hero.gltf", first));
    EXPECT_THAT(SavedWeight(m_folder / "hero.gltf"), Near(0.2));
}

TEST_F(BufferBesideTheFile, WhatAnInterruptedSavingLeftIsRemoved)
{
    WriteBytes(m_folder / "hero.weights-0123456789abcdef.bin", {1, 2, 3});
    WriteBytes(m_folder / "heroine.weights-0123456789abcdef.bin", {1, 2, 3});
    WriteBytes(m_folder / "hero.weights-notours.bin", {1, 2, 3});
    static_cast<void>(gltf::WriteCharacter(m_file, {}, {}, m_folder / "hero.gltf"));
    EXPECT_THAT(m_folder.Names(), ElementsAre("data one.bin", "hero.gltf", "hero.weights-notours.bin",
                                              "heroine.weights-0123456789abcdef.bin"));
}

TEST_F(BufferBesideTheFile, AWeightFileThatAnotherCharacterNamesStays)
{
    static_cast<void>(gltf::WriteCharacter(m_file, EditOf(m_file, 0.2), {}, m_folder / "hero.gltf"));
    fs::copy_file(m_folder / "hero.gltf", m_folder / "copy.gltf");
    static_cast<void>(gltf::WriteCharacter(m_file, EditOf(m_file, 0.3), {}, m_folder / "hero.gltf"));
    EXPECT_THAT(SavedWeight(m_folder / "copy.gltf"), Near(0.2));
    EXPECT_THAT(SavedWeight(m_folder / "hero.gltf"), Near(0.3));
}

TEST_F(BufferBesideTheFile, AnotherFolderGetsTheBuffersAndPictures)
{
    std::filesystem::create_directory(m_folder / "tex");
    WriteBytes(m_folder / "tex/skin.png", {9, 8, 7});
    m_builder.json["images"] = Json::array({{{"uri", "tex/skin.png"}}, {{"uri", "gone.png"}}});
    WriteBytes(m_folder / "hero.gltf", m_builder.TextWithFile("data%20one.bin"));
    m_file = gltf::ReadCharacter(m_folder / "hero.gltf");
    const TemporaryFolder other;
    const gltf::SaveReport report = gltf::WriteCharacter(m_file, EditOf(m_file), {}, other / "villain.gltf");
    EXPECT_THAT(other.Names(), ElementsAre("data one.bin", "tex", "tex/skin.png", "villain.gltf",
                                           NameOfWeightBuffer(other, "villain")));
    EXPECT_EQ(ReadBytes(other / "tex/skin.png"), ReadBytes(m_folder / "tex/skin.png"));
    EXPECT_THAT(report.warnings, ElementsAre(HasSubstr("the picture was not taken along")));
    EXPECT_THAT(SavedWeight(other / "villain.gltf"), Near(0.2));
}

TEST_F(BufferBesideTheFile, AnotherFileOfABuffersNameInTheOtherFolderIsNotOverwritten)
{
    const TemporaryFolder other;
    WriteBytes(other / "data one.bin", {1, 2, 3});
    EXPECT_THAT(FailureOf(m_file, EditOf(m_file), other / "hero.gltf"),
                HasSubstr("\"data one.bin\" beside it has other content"));
    EXPECT_THAT(other.Names(), ElementsAre("data one.bin"));
    EXPECT_EQ(ReadBytes(other / "data one.bin"), (std::vector<std::uint8_t>{1, 2, 3}));
    WriteBytes(other / "data one.bin", m_builder.buffer);
    EXPECT_EQ(FailureOf(m_file, EditOf(m_file), other / "hero.gltf"), "");
}

TEST_F(BufferBesideTheFile, ThatSomeoneElseChangedIsNotTakenForTheOpenedOne)
{
    std::vector<std::uint8_t> changed = m_builder.buffer;
    changed[0] ^= 1;
    changed.push_back(0);
    WriteBytes(m_folder / "data one.bin", changed);
    EXPECT_THAT(FailureOf(m_file, EditOf(m_file), m_folder / "hero.gltf"), HasSubstr("other content"));
    EXPECT_EQ(ReadBytes(m_folder / "data one.bin"), changed);
}

TEST_F(BufferBesideTheFile, ThatWasDeletedMeanwhileIsThereAgain)
{
    fs::remove(m_folder / "data one.bin");
    EXPECT_EQ(FailureOf(m_file, EditOf(m_file), m_folder / "hero.gltf"), "");
    EXPECT_EQ(ReadBytes(m_folder / "data one.bin"), m_builder.buffer);
}

TEST_F(BufferBesideTheFile, AFailedSavingElsewhereTakesItsFilesAndFoldersBack)
{
    std::filesystem::create_directories(m_folder / "a/b");
    WriteBytes(m_folder / "a/b/c.bin", m_builder.buffer);
    WriteBytes(m_folder / "hero.gltf", m_builder.TextWithFile("a/b/c.bin"));
    m_file = gltf::ReadCharacter(m_folder / "hero.gltf");
    const TemporaryFolder other;
    std::filesystem::create_directory(other / "taken.gltf");
    EXPECT_NE(FailureOf(m_file, EditOf(m_file), other / "taken.gltf"), "");
    EXPECT_THAT(other.Names(), ElementsAre("taken.gltf"));
}

TEST_F(BufferBesideTheFile, AFailedSavingLeavesNoNewFileBehind)
{
    std::filesystem::create_directory(m_folder / "taken.gltf");
    const std::vector<std::string> before = m_folder.Names();
    EXPECT_THAT(FailureOf(m_file, EditOf(m_file), m_folder / "taken.gltf"), HasSubstr("is a folder"));
    EXPECT_EQ(m_folder.Names(), before);
}

TEST(SaveFile, AnotherExtensionIsRefusedInOneSentence)
{
    const CharacterFile file = MakeValidCharacter().Read();
    const TemporaryFolder folder;
    EXPECT_THAT(FailureOf(file, {}, folder / "a.gltf"),
                HasSubstr("was opened as .glb and is saved as that, not as .gltf"));
    EXPECT_THAT(FailureOf(file, {}, folder / "a"), HasSubstr("not as a file without extension"));
    EXPECT_EQ(FailureOf(file, {}, folder / "a.GLB"), "");
    EXPECT_THAT(folder.Names(), ElementsAre("a.GLB"));
}

TEST(SaveFile, ASymbolicLinkStaysAndItsTargetIsReplaced)
{
    const CharacterFile file = MakeValidCharacter().Read();
    const TemporaryFolder folder;
    const TemporaryFolder other;
    WriteBytes(other / "real.glb", {1});
    fs::create_symlink(other / "real.glb", folder / "second.glb");
    fs::create_symlink("second.glb", folder / "first.glb");
    EXPECT_EQ(FailureOf(file, {}, folder / "first.glb"), "");
    EXPECT_TRUE(fs::is_symlink(folder / "first.glb"));
    EXPECT_TRUE(fs::is_symlink(folder / "second.glb"));
    EXPECT_FALSE(fs::is_symlink(other / "real.glb"));
    EXPECT_EQ(ReadBytes(other / "real.glb"), MakeValidCharacter().Glb());
    fs::create_symlink("circle.glb", folder / "circle.glb");
    EXPECT_THAT(FailureOf(file, {}, folder / "circle.glb"), HasSubstr("lead in a circle"));
}

TEST(SaveFile, KeepsWhoMayReadTheFile)
{
    const CharacterFile file = MakeValidCharacter().Read();
    const TemporaryFolder folder;
    WriteBytes(folder / "a.glb", {1});
    fs::permissions(folder / "a.glb", fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
    EXPECT_EQ(FailureOf(file, {}, folder / "a.glb"), "");
    EXPECT_EQ(fs::status(folder / "a.glb").permissions(),
              fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
}

TEST(SaveFile, AFolderAMissingFolderAndAPipeAreRefused)
{
    const CharacterFile file = MakeValidCharacter().Read();
    const TemporaryFolder folder;
    fs::create_directory(folder / "d.glb");
    ASSERT_EQ(::mkfifo((folder / "p.glb").c_str(), 0600), 0);
    EXPECT_THAT(FailureOf(file, {}, folder / "d.glb"), HasSubstr("is a folder"));
    EXPECT_THAT(FailureOf(file, {}, folder / "p.glb"), HasSubstr("is not an ordinary file"));
    EXPECT_THAT(FailureOf(file, {}, folder / "none/a.glb"),
                HasSubstr("the folder that it should be saved in is not there"));
    EXPECT_THAT(folder.Names(), ElementsAre("d.glb", "p.glb"));
}

// Runs in a process of its own, whose exit status says whether all was as it should be.
int RunApart(const std::function<bool()>& isRight)
{
    const pid_t child = ::fork();
    if (child == 0) {
        ::_exit(isRight() ? 0 : 1);
    }
    int status = -1;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(SaveFile, AFullDiskLeavesTheOldFileWhole)
{
    const CharacterFile file = MakeValidCharacter().Read();
    const TemporaryFolder folder;
    WriteBytes(folder / "a.glb", {1, 2, 3});
    EXPECT_EQ(RunApart([&] {
                  std::signal(SIGXFSZ, SIG_IGN);
                  const rlimit small{100, 100};
                  ::setrlimit(RLIMIT_FSIZE, &small);
                  return FailureOf(file, {}, folder / "a.glb").find("cannot be written") != std::string::npos;
              }),
              0);
    EXPECT_EQ(ReadBytes(folder / "a.glb"), (std::vector<std::uint8_t>{1, 2, 3}));
    EXPECT_THAT(folder.Names(), ElementsAre("a.glb"));
}

TEST(SaveFile, WithoutPermissionNothingChanges)
{
    const CharacterFile file = MakeValidCharacter().Read();
    const TemporaryFolder folder;
    const std::string path = folder / "a.glb";
    WriteBytes(path, {1, 2, 3});
    ASSERT_EQ(::chmod(path.c_str(), 0444), 0);
    const std::string parent = fs::path(path).parent_path();
    ASSERT_EQ(::chmod(parent.c_str(), 0777), 0);
    const auto failsAsSomeoneElse = [&](const char* words) {
        return RunApart([&] {
            constexpr uid_t NOBODY = 65534;
            return (::geteuid() != 0 || ::setuid(NOBODY) == 0) &&
                   FailureOf(file, {}, path).find(words) != std::string::npos;
        });
    };
    EXPECT_EQ(failsAsSomeoneElse("is write-protected"), 0);
    ASSERT_EQ(::chmod(path.c_str(), 0666), 0);
    ASSERT_EQ(::chmod(parent.c_str(), 0555), 0);
    EXPECT_EQ(failsAsSomeoneElse("cannot be written in this folder"), 0);
    ASSERT_EQ(::chmod(parent.c_str(), 0700), 0);
    EXPECT_EQ(ReadBytes(path), (std::vector<std::uint8_t>{1, 2, 3}));
}

TEST(SaveFile, InterruptedAtAnyMomentTheOldOrTheNewFileIsWhole)
{
    const CharacterFile file = MakeValidCharacter().Read();
    const TemporaryFolder folder;
    const std::string path = folder / "a.glb";
    static_cast<void>(gltf::WriteCharacter(file, EditOf(file, 0.25), {}, path));
    const std::vector<std::uint8_t> one = ReadBytes(path);
    static_cast<void>(gltf::WriteCharacter(file, EditOf(file, 0.75), {}, path));
    const std::vector<std::uint8_t> other = ReadBytes(path);
    for (int round = 0; round < 40; ++round) {
        const pid_t child = ::fork();
        if (child == 0) {
            for (int i = 0;; ++i) {
                static_cast<void>(gltf::WriteCharacter(file, EditOf(file, i % 2 == 0 ? 0.25 : 0.75), {}, path));
            }
        }
        std::this_thread::sleep_for(std::chrono::microseconds(500 + round * 137));
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        const std::vector<std::uint8_t> now = ReadBytes(path);
        ASSERT_TRUE(now == one || now == other);
    }
}

TEST(SaveFile, ASecondEditBuildsOnTheOpenedFileAndLosesNothing)
{
    const std::vector<std::uint8_t> bytes = MakeValidCharacter().Glb();
    const CharacterFile file = gltf::ReadCharacter(bytes, "a.glb");
    const TemporaryFolder folder;
    CharacterEdits edits = EditOf(file, 0.2, 2);
    EXPECT_EQ(gltf::WriteCharacter(file, edits, {}, folder / "a.glb").verticesChanged, 1u);
    SetRow(edits.models[0], 5, {{0, 0.9}, {1, 0.1}});
    EXPECT_EQ(gltf::WriteCharacter(file, edits, {}, folder / "a.glb").verticesChanged, 2u);
    EXPECT_THAT(SavedWeight(folder / "a.glb", 2), Near(0.2));
    EXPECT_THAT(SavedWeight(folder / "a.glb", 5), Near(0.9));
    static_cast<void>(gltf::WriteCharacter(file, {}, {}, folder / "a.glb"));
    EXPECT_EQ(ReadBytes(folder / "a.glb"), bytes);
}

TEST(SaveFile, WhatSomeoneElseWroteIsSeen)
{
    const TemporaryFolder folder;
    const std::string path = folder / "a.glb";
    WriteBytes(path, MakeValidCharacter().Glb());
    const CharacterFile file = gltf::ReadCharacter(path);
    const gltf::FileStamp opened = gltf::OpenedStamp(file);
    EXPECT_FALSE(gltf::ChangedOnDisk(path, opened));
    fs::last_write_time(path, fs::last_write_time(path) + std::chrono::seconds(5));
    EXPECT_FALSE(gltf::ChangedOnDisk(path, opened)) << "touched, but the content is the same";
    const gltf::FileStamp saved = gltf::WriteCharacter(file, EditOf(file), {}, path).stamp;
    EXPECT_FALSE(gltf::ChangedOnDisk(path, saved));
    EXPECT_TRUE(gltf::ChangedOnDisk(path, opened));
    std::vector<std::uint8_t> bytes = ReadBytes(path);
    bytes.back() ^= 1;
    WriteBytes(path, bytes);
    fs::last_write_time(path, fs::last_write_time(path) + std::chrono::seconds(5));
    EXPECT_TRUE(gltf::ChangedOnDisk(path, saved));
    fs::remove(path);
    EXPECT_TRUE(gltf::ChangedOnDisk(path, saved));
}

// A GLB of nothing but JSON.
std::vector<std::uint8_t> GlbOf(const Json& json)
{
    std::string text = json.dump();
    text.resize((text.size() + 3) / 4 * 4, ' ');
    std::vector<std::uint8_t> glb{'g', 'l', 'T', 'F', 2, 0, 0, 0};
    for (const std::size_t word : {20 + text.size(), text.size()}) {
        for (int i = 0; i < 4; ++i) {
            glb.push_back(static_cast<std::uint8_t>(word >> (8 * i)));
        }
    }
    for (const char c : "JSON" + text) {
        glb.push_back(static_cast<std::uint8_t>(c));
    }
    return glb;
}

TEST(SaveFile, AGlbWithoutBinaryChunkGetsOneForItsFirstBytes)
{
    GltfBuilder b = MakeValidCharacter();
    for (auto& accessor : b.json["accessors"]) {
        accessor.erase("bufferView");
    }
    b.json.erase("bufferViews");
    b.Primitive().erase("indices");
    const CharacterFile file = gltf::ReadCharacter(GlbOf(b.json), "a.glb");
    ASSERT_EQ(file.meshes[0].VertexCount(), 1u); // all at one place
    const TemporaryFolder folder;
    static_cast<void>(gltf::WriteCharacter(file, EditOf(file, 0.25, 0), {}, folder / "a.glb"));
    EXPECT_EQ(SavedWeight(folder / "a.glb", 0), 0.25);
    EXPECT_EQ(ReadRawGltf(folder / "a.glb").buffers.size(), 1u);
}

TEST(SaveFile, AGlbWhoseBuffersAreDataUrisGetsAnotherOne)
{
    const CharacterFile file = gltf::ReadCharacter(GlbOf(Json::parse(MakeValidCharacter().Text())), "a.glb");
    const TemporaryFolder folder;
    static_cast<void>(gltf::WriteCharacter(file, EditWithNewJoint(file), {}, folder / "a.glb"));
    EXPECT_THAT(SavedWeight(folder / "a.glb"), Near(0.2));
    EXPECT_EQ(ReadRawGltf(folder / "a.glb").buffers.size(), 2u);
}

} // namespace
} // namespace skindesk::test
