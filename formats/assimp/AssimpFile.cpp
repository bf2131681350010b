// SPDX-License-Identifier: MIT
// FBX and COLLADA files: read in a process of its own, handed over as records.
#include "AssimpFile.h"

#include "ChildProcess.h"
#include "PackedCharacter.h"
#include "SceneImport.h"

#include <stdexcept>

namespace skindesk::assimp {

namespace {

// Characters are some megabytes; what is larger is a whole film set or a trap.
constexpr std::size_t LARGEST_FILE = std::size_t{1} << 30;
constexpr std::uint64_t MEMORY_FLOOR = std::uint64_t{1} << 30;
constexpr std::uint64_t MEMORY_PER_FILE_BYTE = 64;

// The first byte of the child's answer.
constexpr std::uint8_t IS_CHARACTER = 'c';
constexpr std::uint8_t IS_REFUSAL = 'r';

std::vector<std::uint8_t> Answer(gltf::ByteSpan bytes, SceneKind kind, const std::string& path)
{
    std::vector<std::uint8_t> answer;
    try {
        imports::NewCharacter character = ImportScene(bytes, kind, path);
        answer = PackCharacter(character);
        answer.push_back(IS_CHARACTER);
    } catch (const gltf::FileError& error) {
        const std::string sentence = error.sentence();
        answer.assign(sentence.begin(), sentence.end());
        answer.push_back(IS_REFUSAL);
    }
    return answer;
}

imports::NewCharacter ReadApart(const std::string& path, SceneKind kind)
{
    const gltf::ByteBlock file = gltf::ReadWholeFile(path, path);
    if (file.Size() > LARGEST_FILE) {
        throw gltf::FileError(path, "",
                              "has " + std::to_string(file.Size()) + " bytes, at most " + std::to_string(LARGEST_FILE) +
                                  " are imported");
    }
    ChildLimits limits;
    limits.moreMemory = MEMORY_FLOOR + MEMORY_PER_FILE_BYTE * file.Size();
    const ChildResult result = RunInChild([&] { return Answer(file.Span(), kind, path); }, limits);
    if (result.bytes.empty()) {
        throw gltf::FileError(path, "", "cannot be read: the library that reads such files " + result.failure);
    }
    const gltf::ByteSpan content = gltf::ByteSpan(result.bytes).first(result.bytes.size() - 1);
    if (result.bytes.back() == IS_REFUSAL) {
        throw gltf::FileError(path, "", std::string(content.begin(), content.end()));
    }
    try {
        return UnpackCharacter(content);
    } catch (const std::runtime_error& error) {
        throw gltf::FileError(path, "", std::string("cannot be read: ") + error.what());
    }
}

} // namespace

imports::NewCharacter ReadFbx(const std::string& path) { return ReadApart(path, SceneKind::Fbx); }

imports::NewCharacter ReadCollada(const std::string& path) { return ReadApart(path, SceneKind::Collada); }

} // namespace skindesk::assimp
