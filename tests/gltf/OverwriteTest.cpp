// SPDX-License-Identifier: MIT
// Overwriting bytes at several places of one buffer: only the part that is needed is copied, and nothing else changes.
#include "GltfBuilder.h"
#include "gltf/FileRewrite.h"

#include <gmock/gmock.h>
#include <rapidcheck/gtest.h>

#include <algorithm>

namespace skindesk::test {
namespace {

std::vector<std::uint8_t> Joined(const gltf::RewrittenFile& file)
{
    std::vector<std::uint8_t> bytes;
    for (const gltf::ByteSpan piece : file.pieces) {
        bytes.insert(bytes.end(), piece.begin(), piece.end());
    }
    return bytes;
}

GltfBuilder MakeBuffer(std::size_t size)
{
    GltfBuilder b = MakeValidCharacter();
    std::vector<std::uint8_t> bytes(size);
    for (std::size_t i = 0; i < size; ++i) {
        bytes[i] = static_cast<std::uint8_t>(i * 7);
    }
    b.AddView(bytes);
    return b;
}

// Whatever ranges are overwritten in whatever order, the file that is read back has exactly their last bytes.
void CheckOverwriting(bool isBinary)
{
    const std::size_t size = 400;
    const GltfBuilder b = MakeBuffer(size);
    const gltf::CharacterFile file = isBinary ? b.Read() : gltf::ReadCharacter(b.Text(), "tiny.gltf");
    gltf::FileRewrite rewrite(*file.source);
    const gltf::ByteSpan old = file.source->Buffers()[0].bytes;
    std::vector<std::uint8_t> wanted(old.begin(), old.end());
    const auto ranges = *rc::gen::container<std::vector<std::pair<int, int>>>(
        rc::gen::pair(rc::gen::inRange(0, 400), rc::gen::inRange(0, 60)));
    std::uint8_t mark = 100;
    for (const auto& [from, length] : ranges) {
        const std::size_t start = wanted.size() - size + static_cast<std::size_t>(from); // behind what the mesh reads
        const std::size_t count = std::min(static_cast<std::size_t>(length), wanted.size() - start);
        std::uint8_t* const bytes = rewrite.Overwrite(0, start, count);
        RC_ASSERT(std::equal(bytes, bytes + count, wanted.begin() + static_cast<std::ptrdiff_t>(start)));
        for (std::size_t i = 0; i < count; ++i) {
            bytes[i] = wanted[start + i] = ++mark;
        }
    }
    const std::vector<std::uint8_t> saved = Joined(rewrite.Finish("tiny"));
    const gltf::CharacterFile again = gltf::ReadCharacter(saved, isBinary ? "tiny.glb" : "tiny.gltf");
    const gltf::ByteSpan now = again.source->Buffers()[0].bytes;
    RC_ASSERT(std::vector<std::uint8_t>(now.begin(), now.end()) == wanted);
    RC_ASSERT(saved.size() == file.source->Bytes().size());
}

RC_GTEST_PROP(Overwrite, AnyPlacesOfABinaryChunkInAnyOrder, ()) { CheckOverwriting(true); }

RC_GTEST_PROP(Overwrite, AnyPlacesOfADataUriInAnyOrder, ()) { CheckOverwriting(false); }

TEST(Overwrite, OnlyWhatIsNeededIsCopied)
{
    const gltf::CharacterFile file = MakeBuffer(100000).Read();
    gltf::FileRewrite rewrite(*file.source);
    const std::size_t end = file.source->Buffers()[0].byteLength;
    rewrite.Overwrite(0, end - 90000, 4)[0] = 1;
    rewrite.Overwrite(0, end - 90008, 4)[0] = 1;
    const gltf::RewrittenFile& rewritten = rewrite.Finish("tiny");
    std::size_t copied = 0;
    for (const gltf::ByteSpan piece : rewritten.pieces) {
        const gltf::ByteSpan whole = file.source->Bytes();
        const bool isOfTheFile = piece.data() >= whole.data() && piece.data() < whole.data() + whole.size();
        copied += isOfTheFile ? 0 : piece.size();
    }
    EXPECT_LT(copied, 4000U); // the JSON, the headers and a few bytes
}

} // namespace
} // namespace skindesk::test
