// SPDX-License-Identifier: MIT
// An opened file on its way to a saved one: bytes overwritten in copies of its buffers, bytes, accessors and meshes
// added behind those there are, and changes to its JSON.
//
// Where added bytes go: behind the binary chunk of a GLB; for a `.gltf` with buffer files into a weight buffer file of
// its own; else into a new buffer with a data URI. A weight buffer file that an earlier saving made is never changed:
// it is replaced by one of another name. All other buffer files stay as they are.
#pragma once

#include "Accessor.h"
#include "JsonSplice.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace skindesk::gltf {

// What is to be added as an accessor; bytes lie close.
struct NewAccessor
{
    std::vector<std::uint8_t> bytes;
    ComponentType type = ComponentType::Float;
    bool normalised = false;
    std::size_t count = 0;
    std::string shape;
    std::string bounds;       // "\"min\":[...],\"max\":[...]" or empty
    bool isVertexData = true; // bound for a vertex buffer
};

// What the saved file consists of. The spans point into this object and into the opened file.
struct RewrittenFile
{
    std::vector<ByteSpan> pieces; // of the file itself
    std::string weightBufferName; // relative to the folder, decoded; empty when there is none of this saving
    ByteSpan weightBuffer;
    int replacedBuffer = -1; // the opened file's weight buffer that the new one stands for
};

class FileRewrite
{
public:
    explicit FileRewrite(const OpenedFile& file);
    FileRewrite(const FileRewrite&) = delete;
    FileRewrite& operator=(const FileRewrite&) = delete;

    [[nodiscard]] const OpenedFile& File() const { return m_file; }
    [[nodiscard]] JsonSplice& Json() { return m_splice; }

    // Whether bytes of this buffer may be overwritten at all.
    [[nodiscard]] bool IsWritable(int buffer) const;
    // Bytes [from, from + length) of a copy of the buffer, to be overwritten; valid until the next call.
    [[nodiscard]] std::uint8_t* Overwrite(int buffer, std::size_t from, std::size_t length);

    // Each returns the index of what was added.
    int AddAccessor(const NewAccessor& accessor);
    int AddMesh(const std::string& json);

    // Puts the saved file together. `stem` is the saved file's name without extension. Call once, last.
    // Throws FileError when a GLB would be larger than its 32-bit lengths can say.
    [[nodiscard]] const RewrittenFile& Finish(const std::string& stem);

private:
    // Where added bytes go.
    enum class Home
    {
        BinChunk,
        NewBinChunk,
        WeightFile,
        NewWeightFile,
        NewDataUri
    };

    // The part of a buffer in which bytes are overwritten; what lies around it is not copied.
    struct Window
    {
        std::size_t start = 0;
        std::vector<std::uint8_t> bytes;

        [[nodiscard]] std::size_t End() const { return start + bytes.size(); }
        void Widen(ByteSpan buffer, std::size_t from, std::size_t to);
    };

    [[nodiscard]] Home ChooseHome() const;
    int AddToList(const char* key, const std::string& json, std::size_t& added);
    [[nodiscard]] std::size_t HomeSize() const;
    void FinishAddedBytes(const std::string& stem);
    void SetByteLength(int buffer, std::size_t length);
    void FinishDataUris();
    void FinishWeightFile(const std::string& stem);
    void FinishGlb();
    void AddPiece(std::vector<std::uint8_t> bytes);

    const OpenedFile& m_file;
    JsonSplice m_splice;
    std::map<int, Window> m_overwritten; // by buffer
    Home m_home;
    int m_homeBuffer; // index in the saved file
    std::vector<std::uint8_t> m_added;
    std::size_t m_addedViews = 0;
    std::size_t m_addedAccessors = 0;
    std::size_t m_addedMeshes = 0;
    std::map<std::string, std::vector<std::string>> m_newLists; // lists at the root that the file does not have
    std::string m_text;
    std::vector<std::uint8_t> m_weightFile;
    std::vector<std::vector<std::uint8_t>> m_ownPieces;
    RewrittenFile m_result;
};

// "NAME.weights-0123456789abcdef.bin" with any NAME: a weight buffer file that a saving made.
[[nodiscard]] bool IsWeightBufferName(const std::string& name);
[[nodiscard]] bool IsWeightBufferNameOf(const std::string& name, const std::string& stem);

// A number as JSON, so that reading it gives the same one back.
[[nodiscard]] std::string JsonNumber(double value);

} // namespace skindesk::gltf
