// SPDX-License-Identifier: MIT
// GLB chunks and where buffers come from.
#include "GltfBuilder.h"
#include "support/GltfCompare.h"

#include <gmock/gmock.h>

#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>

namespace skindesk::test {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

void SetWord(std::vector<std::uint8_t>& bytes, std::size_t at, std::uint32_t word)
{
    std::memcpy(&bytes[at], &word, 4);
}

std::uint32_t Word(const std::vector<std::uint8_t>& bytes, std::size_t at)
{
    std::uint32_t word = 0;
    std::memcpy(&word, &bytes[at], 4);
    return word;
}

TEST(Glb, CutAtAnyLengthIsRefusedInOneLine)
{
    const std::vector<std::uint8_t> whole = MakeValidCharacter().Glb();
    for (std::size_t length = 0; length < whole.size(); ++length) {
        const std::vector<std::uint8_t> cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
        const std::string refusal = RefusalOf(cut);
        ASSERT_NE(refusal, "") << length;
        ASSERT_EQ(refusal.find('\n'), std::string::npos);
    }
    EXPECT_EQ(RefusalOf(whole), "");
}

TEST(Glb, EveryWrongLengthFieldIsRefused)
{
    const std::vector<std::uint8_t> whole = MakeValidCharacter().Glb();
    const std::size_t bin = 20 + Word(whole, 12);
    for (const std::size_t field : {std::size_t{8}, std::size_t{12}, bin}) {
        for (const std::uint32_t value : {0xFFFFFFFFu, 0xFFFFFFFCu, 0x7FFFFFFFu, Word(whole, field) + 4}) {
            std::vector<std::uint8_t> spoiled = whole;
            SetWord(spoiled, field, value);
            EXPECT_NE(RefusalOf(spoiled), "") << field << " " << value;
        }
    }
}

TEST(Glb, AnotherVersionIsRefusedByItsNumber)
{
    std::vector<std::uint8_t> glb = MakeValidCharacter().Glb();
    SetWord(glb, 4, 1);
    EXPECT_THAT(RefusalOf(glb), HasSubstr("byte 4: the GLB has version 1, 2 is read"));
}

TEST(Glb, ZeroBytesBehindTheJsonArePadding)
{
    std::vector<std::uint8_t> glb = MakeValidCharacter().Glb();
    const std::size_t end = 20 + Word(glb, 12);
    glb.insert(glb.begin() + static_cast<std::ptrdiff_t>(end), 4, 0);
    SetWord(glb, 12, Word(glb, 12) + 4);
    SetWord(glb, 8, Word(glb, 8) + 4);
    const gltf::CharacterFile file = gltf::ReadCharacter(glb, "tiny.glb");
    gltf::CharacterEdits edits;
    edits.addedJoints.push_back({0, 0, {}});
    const TemporaryFolder folder;
    static_cast<void>(gltf::WriteCharacter(file, edits, {}, folder / "tiny.glb"));
    EXPECT_EQ(RefusalOf(ReadBytes(folder / "tiny.glb")), "");
}

TEST(Glb, AGlbNamedGltfIsReadByItsContent) { EXPECT_EQ(RefusalOf(MakeValidCharacter().Glb(), "tiny.gltf"), ""); }

TEST(Glb, ChunksThatNobodyKnowsAndBytesBehindTheEndSurviveAnEdit)
{
    std::vector<std::uint8_t> glb = MakeValidCharacter().Glb();
    const std::vector<std::uint8_t> extra{4, 0, 0, 0, 'X', 'T', 'R', 'A', 1, 2, 3, 4};
    glb.insert(glb.end(), extra.begin(), extra.end());
    SetWord(glb, 8, static_cast<std::uint32_t>(glb.size()));
    const std::vector<std::uint8_t> behind{'t', 'a', 'i', 'l'};
    glb.insert(glb.end(), behind.begin(), behind.end());
    const gltf::CharacterFile file = gltf::ReadCharacter(glb, "tiny.glb");
    gltf::CharacterEdits edits{{WeightsOf(file, 0)}, {}};
    SetRow(edits.models[0], 2, {{0, 0.2}, {1, 0.8}});
    edits.addedJoints.push_back({0, 0, {2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 1}});
    const TemporaryFolder folder;
    static_cast<void>(gltf::WriteCharacter(file, edits, {}, folder / "tiny.glb"));
    const std::vector<std::uint8_t> saved = ReadBytes(folder / "tiny.glb");
    std::vector<std::uint8_t> tail = extra;
    tail.insert(tail.end(), behind.begin(), behind.end());
    ASSERT_GT(saved.size(), glb.size());
    EXPECT_TRUE(std::equal(tail.rbegin(), tail.rend(), saved.rbegin()));
    EXPECT_EQ(Word(saved, 8), saved.size() - behind.size());
    EXPECT_EQ(RefusalOf(saved), "");
}

TEST(BufferFile, PercentEncodedNamesInTheFolderAndBelowItAreRead)
{
    const TemporaryFolder folder;
    const GltfBuilder b = MakeValidCharacter();
    std::filesystem::create_directory(folder / "sub dir");
    for (const auto& [uri, name] :
         std::vector<std::pair<std::string, std::string>>{{"b%C3%BCffer%20one.bin", "b\xC3\xBC"
                                                                                    "ffer one.bin"},
                                                          {"sub%20dir/x.bin", "sub dir/x.bin"},
                                                          {"./plain.bin", "plain.bin"},
                                                          {"100%25.bin", "100%.bin"},
                                                          {"with space.bin", "with space.bin"}}) {
        WriteBytes(folder / name, b.buffer);
        WriteBytes(folder / "c.gltf", b.TextWithFile(uri));
        EXPECT_EQ(gltf::ReadCharacter(folder / "c.gltf").meshes[0].VertexCount(), 8u) << uri;
    }
}

TEST(BufferFile, NamesThatLeaveTheFolderAreRefused)
{
    const TemporaryFolder folder;
    const GltfBuilder b = MakeValidCharacter();
    std::filesystem::create_directory(folder / "inner");
    WriteBytes(folder / "b.bin", b.buffer);
    for (const std::string uri :
         {"../b.bin", "x/../../b.bin", "%2e%2e/b.bin", "..%2fb.bin", "/etc/passwd", "%2Fetc/passwd",
          "file:///etc/passwd", "http://example.org/b.bin", "HTTPS:b.bin", "b%00.bin", "b%2.bin", "b%zz.bin", ""}) {
        WriteBytes(folder / "inner/c.gltf", b.TextWithFile(uri));
        EXPECT_THROW(static_cast<void>(gltf::ReadCharacter(folder / "inner/c.gltf")), gltf::FileError) << uri;
    }
}

TEST(BufferFile, ASymbolicLinkOutOfTheFolderIsRefused)
{
    const TemporaryFolder folder;
    const GltfBuilder b = MakeValidCharacter();
    std::filesystem::create_directory(folder / "inner");
    WriteBytes(folder / "b.bin", b.buffer);
    std::filesystem::create_symlink(folder / "b.bin", folder / "inner/link.bin");
    WriteBytes(folder / "inner/c.gltf", b.TextWithFile("link.bin"));
    try {
        static_cast<void>(gltf::ReadCharacter(folder / "inner/c.gltf"));
        FAIL() << "was taken";
    } catch (const gltf::FileError& error) {
        EXPECT_THAT(error.what(), HasSubstr("symbolic link"));
        EXPECT_EQ(error.where(), "/buffers/0/uri");
    }
}

TEST(BufferFile, FoldersPipesAndMissingFilesAreRefusedWithoutWaiting)
{
    const TemporaryFolder folder;
    const GltfBuilder b = MakeValidCharacter();
    std::filesystem::create_directory(folder / "d.bin");
    ASSERT_EQ(::mkfifo((folder / "p.bin").c_str(), 0600), 0);
    for (const auto& [uri, says] : std::vector<std::pair<std::string, std::string>>{
             {"d.bin", "is a folder"}, {"p.bin", "is not an ordinary file"}, {"gone.bin", "cannot be opened"}}) {
        WriteBytes(folder / "c.gltf", b.TextWithFile(uri));
        try {
            static_cast<void>(gltf::ReadCharacter(folder / "c.gltf"));
            FAIL() << uri;
        } catch (const gltf::FileError& error) {
            EXPECT_THAT(error.what(), HasSubstr(says));
        }
    }
}

TEST(File, FoldersPipesAndMissingFilesAreRefusedWithoutWaiting)
{
    const TemporaryFolder folder;
    ASSERT_EQ(::mkfifo((folder / "p.glb").c_str(), 0600), 0);
    std::filesystem::create_directory(folder / "d.glb");
    for (const char* name : {"p.glb", "d.glb", "gone.glb"}) {
        EXPECT_THROW(static_cast<void>(gltf::ReadCharacter(folder / name)), gltf::FileError) << name;
    }
    EXPECT_THAT(RefusalOf(BytesOf("just some text"), "notes.gltf"), HasSubstr("byte 0"));
}

TEST(DataUri, ThatIsNotBase64IsRefused)
{
    const GltfBuilder b = MakeValidCharacter();
    EXPECT_THAT(RefusalOf(b.TextWithFile("data:application/octet-stream,abc"), "c.gltf"),
                HasSubstr("not marked as base64"));
    EXPECT_THAT(RefusalOf(b.TextWithFile("data:;base64,AAA\xC3\xA9"), "c.gltf"), HasSubstr("no base64"));
    EXPECT_THAT(RefusalOf(b.TextWithFile("data:;base64,AAAAA"), "c.gltf"), HasSubstr("no base64"));
    EXPECT_THAT(RefusalOf(b.TextWithFile("data:;base64,AAAA"), "c.gltf"), HasSubstr("3 are there"));
}

TEST(DataUri, EscapedSlashesAndPercentSignsAreRead)
{
    const GltfBuilder b = MakeValidCharacter();
    std::string text;
    for (const std::uint8_t c : b.Text()) {
        text += c == '/' ? "\\/" : std::string(1, static_cast<char>(c));
    }
    EXPECT_EQ(RefusalOf(BytesOf(text), "c.gltf"), "");
    text.clear();
    bool isInData = false;
    for (const std::uint8_t c : b.Text()) {
        isInData |= text.ends_with("base64,");
        text += isInData && c == '=' ? "%3D" : isInData && c == 'A' ? "%41" : std::string(1, static_cast<char>(c));
        isInData &= c != '"';
    }
    EXPECT_EQ(RefusalOf(BytesOf(text), "c.gltf"), "");
}

TEST(File, OfAnotherVersionOrWithoutOneIsRefused)
{
    GltfBuilder b = MakeValidCharacter();
    b.json["asset"]["version"] = "1.0";
    EXPECT_THAT(RefusalOf(b.Glb()), HasSubstr("version \"1.0\", 2.0 is read"));
    b.json["asset"] = {{"version", "2.0"}, {"minVersion", "2.1"}};
    EXPECT_THAT(RefusalOf(b.Glb()), HasSubstr("needs version \"2.1\""));
    b.json.erase("asset");
    EXPECT_THAT(RefusalOf(b.Glb()), HasSubstr("no \"asset\""));
}

TEST(File, ExtensionsThatDoNotConcernASkinMayBeRequired)
{
    GltfBuilder b = MakeValidCharacter();
    b.json["extensionsRequired"] = {"KHR_materials_unlit", "KHR_texture_transform", "KHR_mesh_quantization"};
    EXPECT_EQ(RefusalOf(b.Glb()), "");
    b.json["extensionsRequired"] = {"KHR_draco_mesh_compression", "EXT_meshopt_compression"};
    EXPECT_EQ(RefusalOf(b.Glb()), "");
    b.json["extensionsRequired"] = {"EXT_mesh_gpu_instancing"};
    EXPECT_THAT(RefusalOf(b.Glb()), HasSubstr("needs the extension EXT_mesh_gpu_instancing"));
}

TEST(File, EveryWrongTypeOfAJsonValueIsASentence)
{
    const GltfBuilder b = MakeValidCharacter();
    const auto flat = b.json.flatten();
    std::size_t refused = 0;
    for (const auto& [pointer, value] : flat.items()) {
        for (const Json& wrong : {Json("text"), Json(-1), Json(1.5), Json(nullptr), Json(1e300), Json::array(),
                                  Json::object(), Json(4294967296), Json(true)}) {
            GltfBuilder spoiled = b;
            spoiled.json[Json::json_pointer(pointer)] = wrong;
            const std::string refusal = RefusalOf(spoiled.Glb());
            EXPECT_EQ(refusal.find('\n'), std::string::npos);
            refused += refusal.empty() ? 0 : 1;
        }
    }
    EXPECT_GT(refused, flat.size() * 4);
}

} // namespace
} // namespace skindesk::test
