// SPDX-License-Identifier: MIT
// Puts a rewritten file on disk with what it needs beside it.
#include "SaveFiles.h"

#include "BufferUri.h"
#include "TemporaryFiles.h"

#include <algorithm>
#include <filesystem>
#include <set>

namespace skindesk::gltf {

namespace {

namespace fs = std::filesystem;

fs::path FolderOrHere(const fs::path& path) { return path.parent_path().empty() ? fs::path(".") : path.parent_path(); }

class Saving
{
public:
    Saving(const OpenedFile& file, const RewrittenFile& rewritten, const std::string& path, const std::stop_token& stop,
           std::vector<std::string>& warnings)
        : m_file(file), m_rewritten(rewritten), m_path(path), m_folder(FolderOrHere(path)), m_stop(stop),
          m_warnings(warnings)
    {
        std::error_code error;
        const fs::path opened = file.Folder().empty() ? fs::path(".") : fs::path(file.Folder());
        m_isSameFolder = fs::equivalent(opened, m_folder, error) && !error;
    }

    void Run(const std::vector<Image>& images)
    {
        if (!fs::is_directory(m_folder)) {
            throw FileError(m_path, "", "the folder that it should be saved in is not there");
        }
        PlanBuffers();
        if (!m_isSameFolder) {
            PlanImages(images);
        }
        RemoveAbandonedTemporaryFiles();
        try {
            GiveUpIfStopped();
            WriteCompanions();
            GiveUpIfStopped();
            ReplaceFile(m_path, m_rewritten.pieces);
        } catch (...) {
            TakeBack();
            throw;
        }
        RemoveStaleWeightBuffers();
    }

private:
    struct Companion
    {
        std::string name; // relative to the folder
        ByteBlock owned;
        ByteSpan bytes;
    };

    void GiveUpIfStopped() const
    {
        if (m_stop.stop_requested()) {
            throw FileError(m_path, "", "was not saved: it was given up");
        }
    }

    [[nodiscard]] std::string PathOf(const std::string& name) const { return (m_folder / name).string(); }

    // What a killed saving of this very file left goes first: it may be what fills the disk.
    void RemoveAbandonedTemporaryFiles() const
    {
        const fs::path target = FollowLinks(m_path);
        const std::string name(NameInTemporary(target.filename().string()));
        const std::string stem = fs::path(m_path).stem().string();
        RemoveAbandonedTemporaries(target.parent_path().string(), [&](const std::string& of) {
            return of == name || IsWeightBufferNameOf(of, stem) || m_needed.contains(of);
        });
    }

    void RefuseOtherContent(const std::string& name) const
    {
        throw FileError(m_path, "",
                        "the file \"" + OneLine(name, 200) + "\" beside it has other content than the one " +
                            "that belongs to this character, so it is not overwritten");
    }

    // What is needed beside the saved file and is not there yet.
    void Plan(const std::string& name, ByteSpan bytes, ByteBlock owned)
    {
        if (!LiesInFolder(m_folder.string(), name)) {
            throw FileError(m_path, "",
                            "the file \"" + OneLine(name, 200) +
                                "\" would be written outside the folder, through a symbolic link");
        }
        m_needed.insert(name);
        std::error_code error;
        if (!fs::exists(fs::symlink_status(PathOf(name), error))) {
            m_companions.push_back({name, std::move(owned), bytes});
        } else if (!HasContent(PathOf(name), bytes)) {
            RefuseOtherContent(name);
        }
    }

    void PlanBuffers()
    {
        for (std::size_t i = 0; i < m_file.Buffers().size(); ++i) {
            const Buffer& buffer = m_file.Buffers()[i];
            if (buffer.home != BufferHome::External || static_cast<int>(i) == m_rewritten.replacedBuffer) {
                continue;
            }
            const FileStamp now = QuickStamp(PathOf(buffer.file));
            const bool isUntouched = m_isSameFolder && now.size == buffer.stamp.size && now.size != 0 &&
                                     now.modifiedNanoseconds == buffer.stamp.modifiedNanoseconds;
            if (isUntouched) {
                m_needed.insert(buffer.file);
            } else {
                Plan(buffer.file, buffer.owned.Span(), {});
            }
        }
        if (m_rewritten.weightBufferName.empty()) {
            return;
        }
        const std::string& name = m_rewritten.weightBufferName;
        m_needed.insert(name);
        if (!HasContent(PathOf(name), m_rewritten.weightBuffer)) {
            m_companions.push_back({name, {}, m_rewritten.weightBuffer});
        }
    }

    void PlanImages(const std::vector<Image>& images)
    {
        for (const Image& image : images) {
            if (image.file.empty()) {
                continue;
            }
            const std::string name = m_file.Folder().empty()
                                         ? image.file
                                         : fs::path(image.file).lexically_relative(m_file.Folder()).string();
            if (m_needed.contains(name)) {
                continue;
            }
            try {
                ByteBlock bytes = ReadWholeFile(image.file, image.file);
                const ByteSpan span = bytes.Span();
                Plan(name, span, std::move(bytes));
            } catch (const FileError& error) {
                if (error.path() != image.file) {
                    throw;
                }
                m_warnings.push_back(std::string("the picture was not taken along: ") + error.what());
            }
        }
    }

    void WriteCompanions()
    {
        for (const Companion& companion : m_companions) {
            const fs::path target = m_folder / companion.name;
            std::error_code error;
            const bool existed = fs::exists(fs::symlink_status(target, error));
            MakeFolders(target.parent_path());
            ReplaceFile(target.string(), std::span(&companion.bytes, 1));
            if (!existed) {
                m_made.push_back(target);
            }
        }
    }

    // Notes the folders that were not there, outermost first, so that they can be taken back.
    void MakeFolders(const fs::path& folder)
    {
        std::error_code error;
        std::vector<fs::path> missing;
        for (fs::path at = folder; !at.empty() && !fs::exists(at, error); at = at.parent_path()) {
            missing.push_back(at);
        }
        for (auto at = missing.rbegin(); at != missing.rend(); ++at) {
            if (fs::create_directory(*at, error)) {
                m_made.push_back(*at);
            }
        }
    }

    // Last made, first removed; a folder goes only while it is empty.
    void TakeBack()
    {
        for (auto made = m_made.rbegin(); made != m_made.rend(); ++made) {
            std::error_code ignored;
            fs::remove(*made, ignored);
        }
    }

    // Weight buffer files of this file's name that it does not need: the replaced one, and what interrupted savings
    // left. One that another file in the folder names stays: someone copied the character by hand.
    void RemoveStaleWeightBuffers() const
    {
        if (m_file.Container().isBinary) {
            return;
        }
        const std::string stem = fs::path(m_path).stem().string();
        std::vector<std::string> stale;
        std::vector<fs::path> others;
        std::error_code error;
        for (fs::directory_iterator entry(m_folder, error), end; !error && entry != end; entry.increment(error)) {
            const std::string name = entry->path().filename().string();
            if (IsWeightBufferNameOf(name, stem) && !m_needed.contains(name)) {
                stale.push_back(name);
            } else if (ExtensionOf(name) == ".gltf" && name != fs::path(m_path).filename().string()) {
                others.push_back(entry->path());
            }
        }
        if (stale.empty()) {
            return;
        }
        const std::set<std::string> named = NamedElsewhere(stale, others, stem);
        for (const std::string& name : stale) {
            if (!named.contains(name)) {
                fs::remove(m_folder / name, error);
            }
        }
    }

    // The part of the name behind the stem is all ASCII, so it stands in a URI as it is.
    static std::set<std::string> NamedElsewhere(const std::vector<std::string>& names,
                                                const std::vector<fs::path>& others, const std::string& stem)
    {
        std::set<std::string> named;
        for (const fs::path& other : others) {
            try {
                const ByteBlock bytes = ReadWholeFile(other.string(), other.string());
                const std::string_view text = GltfContainer::Text(bytes.Span(), 0, bytes.Size());
                for (const std::string& name : names) {
                    if (text.find(name.substr(stem.size())) != std::string_view::npos) {
                        named.insert(name);
                    }
                }
            } catch (const FileError&) {
                // What cannot be read may name anything.
                named.insert(names.begin(), names.end());
            }
        }
        return named;
    }

    const OpenedFile& m_file;
    const RewrittenFile& m_rewritten;
    const std::string& m_path;
    fs::path m_folder;
    const std::stop_token& m_stop;
    std::vector<std::string>& m_warnings;
    bool m_isSameFolder = false;
    std::set<std::string> m_needed;
    std::vector<Companion> m_companions;
    std::vector<fs::path> m_made;
};

} // namespace

void CheckExtension(const OpenedFile& file, const std::string& path)
{
    std::string opened = ExtensionOf(file.Path());
    if (opened.empty()) {
        opened = file.Container().isBinary ? ".glb" : ".gltf";
    }
    const std::string wanted = ExtensionOf(path);
    if (wanted != opened) {
        throw FileError(path, "",
                        "the file was opened as " + opened + " and is saved as that, not as " +
                            (wanted.empty() ? "a file without extension" : wanted));
    }
}

void SaveFiles(const OpenedFile& file, const std::vector<Image>& images, const RewrittenFile& rewritten,
               const std::string& path, const std::stop_token& stop, std::vector<std::string>& warnings)
{
    Saving(file, rewritten, path, stop, warnings).Run(images);
}

} // namespace skindesk::gltf
