// SPDX-License-Identifier: MIT
// The open documents: files and the models that came from them. Shared by the desk and the Python module.
#pragma once

#include "gltf/CharacterFile.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <stop_token>
#include <string>
#include <utility>
#include <vector>

class ZModel;
class ZSession;
struct ZTableWork; ///< a table of weights on its way between file and scene

struct ZSaveOptions
{
    std::string source;               ///< path of the opened file that is meant; needed when more than one is open
    std::optional<int> maxInfluences; ///< at least 1
    bool keepTypes = false;
    bool tieSeams = false;
    bool asCopy = false; ///< a copy beside the document: what was unsaved stays so
};

/// What limiting to so many influences would drop from one bone of one model.
struct ZLimitLine
{
    ZModel* model = nullptr;
    std::string bone;
    int vertices = 0;
    double weight = 0; ///< the sum of the dropped weights, fractions of a vertex
};

/// What reading a table of weights did.
struct ZImportReport
{
    int verticesChanged = 0;
    int rowsRead = 0;
    std::vector<std::string> unmatched; ///< one line for each model, vertex or bone that is not in the scene
};

/// One opened file.
struct ZDocument
{
    int id = 0; ///< never given twice in a session
    std::string path;
    bool unsavedChanges = false;
    bool isNew = false; ///< made of another kind of file, or recovered: `path` is no place to save it to
};

/// A file as it was read, on its way into the scene. It knows no scene, so it may be made on any thread.
struct ZReadDocument
{
    std::string path;
    skindesk::gltf::CharacterFile file;
    bool isNew = false;     ///< see ZDocument; such a document has unsaved changes until it is saved somewhere
    bool isForeign = false; ///< made of another kind of file: may be saved as `.glb` and as `.gltf`
};

/// A saving on its way to disk: all that is needed of the scene has been taken from it.
struct ZSaveWork
{
    int document = 0;
    std::string path;
    bool asCopy = false;
    bool ownFile = false;
    bool isForeign = false; ///< see ZReadDocument
    std::shared_ptr<const skindesk::gltf::CharacterFile> file;
    skindesk::gltf::CharacterEdits edits;
    skindesk::gltf::SaveOptions how;
    skindesk::gltf::SaveReport report;     ///< filled by WriteSave
    std::map<int, std::uint64_t> versions; ///< by node: what the skin had counted to when its weights were taken
};

/// Opens files into the session's scene and saves them again. Several files may be open at once; each is saved by
/// itself. Errors are skindesk::gltf::FileError (path, place, one sentence); then nothing has changed, in the scene or
/// on disk. Warnings go to ZReport_Warning. User-interface thread only.
class ZDocuments
{
public:
    explicit ZDocuments(ZSession& session);
    ~ZDocuments();

    /// Adds the file's models to the scene; answers its geometry models by ascending node index. A file of another kind
    /// (ZForeignFile.h) becomes a new document, whose path is that of the other file until it is saved as glTF.
    std::vector<ZModel*> Open(const std::string& path);
    /// The two halves of Open, for whoever shows that it takes time: Read touches the disk only and may run on a thread
    /// of its own. A stop makes it throw FileError soon.
    static ZReadDocument Read(const std::string& path, const std::stop_token& stop = {});
    std::vector<ZModel*> Adopt(ZReadDocument read);

    skindesk::gltf::SaveReport Save(const std::string& path, const ZSaveOptions& options = {});
    /// The three parts of Save: the first takes from the scene what is written, the second writes it and may run on a
    /// thread of its own, the third notes what was saved. A stop that comes before the moment of saving makes WriteSave
    /// throw FileError; the old file is whole then.
    ZSaveWork PrepareSave(const std::string& path, const ZSaveOptions& options);
    static void WriteSave(ZSaveWork& work, const std::stop_token& stop = {});
    skindesk::gltf::SaveReport FinishSave(ZSaveWork work);

    std::vector<ZLimitLine> LimitReport(int maxInfluences);
    /// Clears the scene and forgets all documents.
    void Clear();

    const std::vector<ZDocument>& GetDocuments();
    bool HasUnsavedChanges();
    /// Has somebody else written the file since it was opened or saved?
    bool ChangedByOthers(int document) const;

    /// Every primitive of the model's mesh: primitive index, and vertex of the file -> vertex of the model. Empty for a
    /// model without a mesh. The spans live as long as the document.
    std::vector<std::pair<int, std::span<const std::int32_t>>> GetFileVertices(const ZModel& model) const;

    /// The mesh of its file that the model shows; -1 for a model without one.
    int GetFileMesh(const ZModel& model) const;

    /// Writes or reads weights by vertex and bone name, as CSV or JSON by the file's extension. Reading is one undo
    /// step and is refused while a tool holds one of the models.
    void ExportWeights(const std::string& path);
    ZImportReport ImportWeights(const std::string& path);
    /// The parts of both, for whoever shows that they take time: what is needed of the scene is taken from it, the file
    /// is written or read on any thread, and what was read goes into the scene. A stop makes the part on the thread
    /// throw FileError soon; then nothing has changed.
    std::shared_ptr<ZTableWork> PrepareExport(const std::string& path);
    static void WriteTable(ZTableWork& work, const std::stop_token& stop = {});
    std::shared_ptr<ZTableWork> PrepareImport(const std::string& path);
    static void ReadTable(ZTableWork& work, const std::stop_token& stop = {});
    ZImportReport FinishImport(ZTableWork& work);

private:
    struct Entry;
    std::shared_ptr<ZTableWork> PrepareTable(const std::string& path, bool withWeights);
    void BringChangesUpToDate();
    Entry& FindSource(const std::string& source);
    const Entry* FindEntry(int document) const;
    ZSession& m_session;
    std::vector<std::shared_ptr<Entry>> m_entries; ///< a saving under way keeps its own
    std::vector<ZDocument> m_listed;
    int m_nextId = 1;
    bool m_couldRedo = false; ///< when changes were last asked for
};
