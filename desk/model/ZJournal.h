// SPDX-License-Identifier: MIT
// What is left of unsaved work when the program ends without being asked to.
#pragma once

#include "documents/ZDocuments.h"

#include <cstdint>
#include <future>
#include <map>
#include <string>
#include <utility>
#include <vector>

/// A document that an earlier session had not saved when it was cut off.
struct ZLeftDocument
{
    std::string session;      ///< the folder of that session
    std::string copy;         ///< the character as it was then: a file of its own in that folder
    std::string original;     ///< the file that the user had opened, or saved last
    std::int64_t seconds = 0; ///< when it was written, since 1970
};

/// Keeps copies of documents with unsaved changes in a folder of the user's data, never beside or over the user's own
/// files. Each session has a folder there, which it holds locked; the system gives the lock back when the process ends,
/// however it ends, and a folder that nobody holds belongs to a session that was cut off. A session that ends properly
/// takes its folder with it.
///
/// A copy is written on a thread of its own from weights that were taken from the scene at one moment, into a place of
/// its own; then the list of the session's copies is replaced at once, and only then the copy before it goes. So there
/// is always one that is whole. User-interface thread only.
class ZJournal
{
public:
    /// `root` is made when there is something to write. An empty one: nothing is kept.
    ZJournal(ZDocuments& documents, std::string root);
    ~ZJournal();
    ZJournal(const ZJournal&) = delete;
    ZJournal& operator=(const ZJournal&) = delete;

    /// Call every half minute or so: begins to write what has changed since the last time, drops what was saved since.
    /// `originals`: by document, where the user would save it. Does nothing in the middle of a gesture or while the
    /// last copies are still being written.
    void Keep(const std::map<int, std::string>& originals);
    /// Drops the copies of documents without unsaved changes and of those that are closed.
    void DropSaved();
    /// Waits until what Keep began is on disk.
    void Finish();
    /// Documents that have a copy on disk.
    int KeptCount() const { return static_cast<int>(m_kept.size()); }

    /// What cut-off sessions left; their folders are held by this session from now on.
    std::vector<ZLeftDocument> FindLeft();
    /// What a cut-off session left will not be offered again; it is removed at the end of this one, since a character
    /// that was opened from there may still need files beside it.
    void Forget(const std::string& session);
    /// Lets other sessions find what this one holds and has not forgotten.
    void LetGo();

private:
    struct Kept
    {
        std::string folder; ///< under the session's, holds the copy and what belongs to it
        std::string copy;
        std::string original;
        std::int64_t seconds = 0;
    };
    struct Writing
    {
        std::map<int, ZSaveWork> works;
        std::map<int, Kept> kept;
        std::vector<std::string> failed;
    };

    bool MakeFolder();
    void Begin(const std::map<int, std::string>& originals);
    void TakeWritten();
    void WriteList() const;
    void Drop(int document);

    ZDocuments& m_documents;
    std::string m_root;
    std::string m_folder; ///< of this session, empty until there is something to write
    int m_lock = -1;
    std::map<std::string, int> m_held;      ///< locks of the folders of cut-off sessions
    std::map<std::string, int> m_forgotten; ///< those that go with this session
    std::map<int, Kept> m_kept;             ///< by document
    std::pair<long, size_t> m_state{-1, 0}; ///< the history's change count and the documents, when copies were begun
    int m_next = 0;
    std::future<Writing> m_writing;
};
