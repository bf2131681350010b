// SPDX-License-Identifier: MIT
// Copies of unsaved work, the list of them, and the locks that tell whose they are.
#include "desk/model/ZJournal.h"

#include "desk/model/ZJournalList.h"
#include "gltf/FileError.h"
#include "object/ZUndoStack.h"
#include "zbaselib/ZReport.h"

#include <chrono>
#include <exception>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <unistd.h>
#include <utility>

namespace fs = std::filesystem;

namespace {

constexpr char kLockName[] = "lock";
constexpr char kSessionPrefix[] = "session-";

/// The lock of a session's folder, taken; -1 when somebody holds it or there is none to take.
int TakeLock(const fs::path& folder, bool make)
{
    const int file = ::open((folder / kLockName).c_str(), O_RDWR | O_CLOEXEC | (make ? O_CREAT : 0), 0600);
    if (file >= 0 && ::flock(file, LOCK_EX | LOCK_NB) == 0)
        return file;
    if (file >= 0)
        ::close(file);
    return -1;
}

std::int64_t Now()
{
    return std::chrono::duration_cast<std::chrono::seconds>(std::chrono::system_clock::now().time_since_epoch())
        .count();
}

/// A copy is saved in the container of the opened file; what came from another kind of file is a .glb.
std::string CopyName(const std::string& path)
{
    fs::path name = fs::path(path).filename();
    if (name.extension() != ".gltf")
        name.replace_extension(".glb");
    return name.string();
}

} // namespace

ZJournal::ZJournal(ZDocuments& documents, std::string root) : m_documents(documents), m_root(std::move(root)) {}

ZJournal::~ZJournal()
{
    if (m_writing.valid())
        m_writing.wait();
    LetGo();
    std::error_code ignored;
    for (const auto& [session, lock] : m_forgotten) {
        fs::remove_all(session, ignored);
        ::close(lock);
    }
    if (!m_folder.empty())
        fs::remove_all(m_folder, ignored);
    if (m_lock >= 0)
        ::close(m_lock);
}

bool ZJournal::MakeFolder()
{
    if (!m_folder.empty())
        return true;
    if (m_root.empty())
        return false;
    std::error_code failed;
    fs::create_directories(m_root, failed);
    std::string name = (fs::path(m_root) / (kSessionPrefix + std::string(6, 'X'))).string();
    if (::mkdtemp(name.data()) == nullptr || (m_lock = TakeLock(name, true)) < 0) {
        ZReport_Warning("Unsaved work cannot be kept for the case of a crash: " + m_root + " cannot be written");
        m_root.clear();
        return false;
    }
    m_folder = name;
    return true;
}

void ZJournal::Keep(const std::map<int, std::string>& originals)
{
    TakeWritten();
    const ZUndoStack& history = *ZUndoStack::TheOne();
    if (m_root.empty() || m_writing.valid() || history.IsTransactionOpen())
        return;
    DropSaved();
    const std::pair<long, size_t> state(history.GetChangeCount(), m_documents.GetDocuments().size());
    if (state == m_state || !m_documents.HasUnsavedChanges() || !MakeFolder())
        return;
    m_state = state;
    Begin(originals);
}

/// Takes the weights of every changed document from the scene and hands them to a thread.
void ZJournal::Begin(const std::map<int, std::string>& originals)
{
    Writing writing;
    const std::vector<ZDocument> documents = m_documents.GetDocuments();
    for (const ZDocument& document : documents) {
        if (!document.unsavedChanges)
            continue;
        const auto original = originals.find(document.id);
        Kept kept;
        kept.folder = (fs::path(m_folder) / std::to_string(m_next++)).string();
        kept.copy = (fs::path(kept.folder) / CopyName(document.path)).string();
        kept.original = original != originals.end() ? original->second : document.path;
        kept.seconds = Now();
        ZSaveOptions options;
        options.source = document.path;
        options.asCopy = true;
        try {
            writing.works[document.id] = m_documents.PrepareSave(kept.copy, options);
            writing.kept[document.id] = kept;
        } catch (const skindesk::gltf::FileError& error) {
            ZReport_Warning(std::string("Unsaved work was not kept: ") + error.what());
        }
    }
    m_writing = std::async(std::launch::async, [writing = std::move(writing)]() mutable {
        for (auto& [document, work] : writing.works) {
            try {
                fs::create_directories(writing.kept[document].folder);
                ZDocuments::WriteSave(work);
            } catch (const std::exception& error) {
                writing.failed.push_back(error.what());
                writing.kept.erase(document);
            }
        }
        return std::move(writing);
    });
}

void ZJournal::TakeWritten()
{
    if (!m_writing.valid() || m_writing.wait_for(std::chrono::seconds(0)) != std::future_status::ready)
        return;
    Writing writing = m_writing.get();
    for (const std::string& failure : writing.failed)
        ZReport_Warning("Unsaved work was not kept: " + failure);
    std::vector<std::string> before;
    for (auto& [document, kept] : writing.kept) {
        if (const auto old = m_kept.find(document); old != m_kept.end())
            before.push_back(old->second.folder);
        m_kept[document] = std::move(kept);
    }
    WriteList();
    std::error_code ignored;
    for (const std::string& folder : before)
        fs::remove_all(folder, ignored);
}

void ZJournal::Finish()
{
    if (m_writing.valid())
        m_writing.wait();
    TakeWritten();
    DropSaved();
}

void ZJournal::WriteList() const
{
    std::vector<ZLeftDocument> lines;
    for (const auto& [document, kept] : m_kept)
        lines.push_back({m_folder, kept.copy, kept.original, kept.seconds});
    if (!ZJournalList_Write(m_folder, lines))
        ZReport_Warning("Unsaved work was not kept: " + m_folder + " cannot be written");
}

void ZJournal::Drop(int document)
{
    const auto kept = m_kept.find(document);
    const std::string folder = kept->second.folder;
    m_kept.erase(kept);
    WriteList();
    std::error_code ignored;
    fs::remove_all(folder, ignored);
}

void ZJournal::DropSaved()
{
    if (m_kept.empty() || ZUndoStack::TheOne()->IsTransactionOpen())
        return;
    std::map<int, Kept> saved = m_kept;
    for (const ZDocument& document : m_documents.GetDocuments())
        if (document.unsavedChanges)
            saved.erase(document.id);
    for (const auto& entry : saved)
        Drop(entry.first);
}

std::vector<ZLeftDocument> ZJournal::FindLeft()
{
    std::vector<ZLeftDocument> left;
    std::error_code failed;
    if (m_root.empty())
        return left;
    for (fs::directory_iterator entry(m_root, failed), end; !failed && entry != end; entry.increment(failed)) {
        const std::string folder = entry->path().string();
        if (!entry->path().filename().string().starts_with(kSessionPrefix) || folder == m_folder ||
            m_forgotten.count(folder) != 0)
            continue;
        if (m_held.count(folder) == 0) {
            const int lock = TakeLock(folder, false);
            if (lock < 0)
                continue;
            m_held[folder] = lock;
        }
        const std::vector<ZLeftDocument> lines = ZJournalList_Read(folder);
        if (lines.empty())
            Forget(folder);
        left.insert(left.end(), lines.begin(), lines.end());
    }
    return left;
}

void ZJournal::Forget(const std::string& session)
{
    const auto held = m_held.find(session);
    if (held == m_held.end())
        return;
    ZJournalList_Remove(session);
    m_forgotten.insert(*held);
    m_held.erase(held);
}

void ZJournal::LetGo()
{
    for (const auto& [session, lock] : m_held)
        ::close(lock);
    m_held.clear();
}
