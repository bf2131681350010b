// SPDX-License-Identifier: MIT
#include "documents/ZDocuments.h"

#include "bcore/ZSession.h"
#include "documents/SavedWeights.h"
#include "documents/ZForeignFile.h"
#include "documents/ZGltfScene.h"
#include "gltf/FileBytes.h"
#include "gltf/GltfContainer.h"
#include "import/GltfText.h"
#include "object/ZUndoStack.h"
#include "zbaselib/ZReport.h"
#include "zmodel/ZSkin.h"
#include "ztoolkit/ZToolKit.h"
#include "zxtrobject/ZXtrObject.h"

#include <filesystem>

namespace gltf = skindesk::gltf;

/// A file, what it became, and how things stood when it was last on disk.
struct ZDocuments::Entry
{
    std::string path;
    ZGltfScene scene;
    std::map<int, SavedWeights> saved; ///< by node
    gltf::FileStamp stamp;             ///< of the file at `path` as we know it
    bool isNew = false;                ///< was never saved: see ZReadDocument
    std::string madeFrom;              ///< the file of another kind that it came from, else empty
    bool isChanged = false;            ///< when it was last asked

    template <class Work> void ForEachSkin(Work work)
    {
        for (auto& [node, weights] : saved)
            if (const ZModel* const model = scene.ModelOf(node); model != nullptr && model->GetSkin() != nullptr)
                work(node, *model->GetSkin(), weights);
    }
};

namespace {

bool IsSameFile(const std::string& a, const std::string& b)
{
    std::error_code failed;
    const bool same = std::filesystem::equivalent(a, b, failed);
    return failed ? a == b : same;
}

/// The other file as it lies on disk now that it was read.
gltf::FileStamp ForeignStamp(const std::string& path)
{
    gltf::FileStamp stamp = gltf::QuickStamp(path);
    if (stamp.size > 0)
        stamp.contentHash = gltf::HashOf(gltf::ReadWholeFile(path, path).Span());
    return stamp;
}

/// Asks before a file is overwritten that somebody else has written since; the safe answer keeps it.
void AskIfChanged(const std::string& path, const gltf::FileStamp& stamp)
{
    if (!std::filesystem::exists(path) || !gltf::ChangedOnDisk(path, stamp))
        return;
    const std::string text = "The file " + path + " was changed by another program since it was opened. Overwrite it?";
    if (ZtDisplayMessage("Save", text.c_str(), "Overwrite", "Cancel", nullptr, 0, 2) != 1)
        throw gltf::FileError(path, "", "was changed by another program since it was opened; nothing was written");
}

} // namespace

ZDocuments::ZDocuments(ZSession& session) : m_session(session) {}

ZDocuments::~ZDocuments() = default;

std::vector<ZModel*> ZDocuments::Open(const std::string& path) { return Adopt(Read(path)); }

ZReadDocument ZDocuments::Read(const std::string& path, const std::stop_token& stop)
{
    ZReadDocument read;
    read.path = path;
    if (const ZForeignKind* const kind = ZForeignFile_KindOf(path)) {
        read.file = ZForeignFile_Read(*kind, path);
        read.isNew = read.isForeign = true;
    } else {
        read.file = gltf::ReadCharacter(path, stop);
    }
    return read;
}

std::vector<ZModel*> ZDocuments::Adopt(ZReadDocument read)
{
    auto entry = std::make_shared<Entry>();
    entry->path = read.path;
    entry->isNew = read.isNew;
    entry->scene.document = m_nextId;
    entry->scene.file = std::move(read.file);
    entry->stamp = read.isForeign ? ForeignStamp(entry->path) : gltf::OpenedStamp(entry->scene.file);
    entry->madeFrom = read.isForeign ? entry->path : "";
    ++m_nextId;
    ZGltfScene_Add(m_session.GetScene(), entry->scene);

    const std::string file = std::filesystem::path(entry->path).filename().string();
    for (const std::string& warning : entry->scene.file.warnings)
        ZReport_Warning(file + ": " + warning);
    std::vector<ZModel*> geometry;
    for (size_t node = 0; node < entry->scene.models.size(); ++node) {
        ZModel* const model = entry->scene.ModelOf(static_cast<int>(node));
        if (model->HasGeometry())
            geometry.push_back(model);
        if (entry->scene.skinVersions[node] == 0)
            continue;
        const auto mesh = static_cast<size_t>(entry->scene.file.nodes[node].mesh);
        entry->saved[static_cast<int>(node)].NoteOpened(*model->GetSkin(), entry->scene.file.meshes[mesh].influences);
    }
    m_entries.push_back(std::move(entry));
    ZXtrObject_Send(kSceneModelsAdded);
    return geometry;
}

ZDocuments::Entry& ZDocuments::FindSource(const std::string& source)
{
    if (m_entries.empty())
        throw gltf::FileError(source, "", "no file is open");
    if (source.empty()) {
        if (m_entries.size() > 1)
            throw gltf::FileError(source, "",
                                  std::to_string(m_entries.size()) + " files are open; say which one is meant");
        return *m_entries.front();
    }
    Entry* found = nullptr;
    for (const auto& entry : m_entries)
        if (entry->path == source || IsSameFile(entry->path, source) || entry->madeFrom == source) {
            if (found != nullptr)
                throw gltf::FileError(source, "", "is open more than once; close one of them first");
            found = entry.get();
        }
    if (found == nullptr)
        throw gltf::FileError(source, "", "is not an open file");
    return *found;
}

gltf::SaveReport ZDocuments::Save(const std::string& path, const ZSaveOptions& options)
{
    ZSaveWork work = PrepareSave(path, options);
    WriteSave(work);
    return FinishSave(std::move(work));
}

ZSaveWork ZDocuments::PrepareSave(const std::string& path, const ZSaveOptions& options)
{
    if (ZUndoStack::TheOne()->IsTransactionOpen())
        throw gltf::FileError(path, "", "cannot be saved in the middle of a gesture");
    Entry& entry = FindSource(options.source);
    ZSaveWork work;
    work.document = entry.scene.document;
    work.path = path;
    work.asCopy = options.asCopy;
    work.ownFile = IsSameFile(path, entry.path);
    work.isForeign = !entry.madeFrom.empty();
    if (work.ownFile && entry.isNew)
        throw gltf::FileError(path, "", "is the file that the character was made from; save it under another name");
    if (work.ownFile)
        AskIfChanged(path, entry.stamp);

    std::vector<std::string> warnings;
    work.how.maxInfluences = options.maxInfluences;
    work.how.keepTypes = options.keepTypes;
    work.how.tieSeams = options.tieSeams;
    work.edits = ZGltfScene_CollectEdits(entry.scene, warnings, &work.how.renormalise);
    work.report.warnings = std::move(warnings);
    for (const auto& kept : m_entries)
        if (kept.get() == &entry)
            work.file = {kept, &kept->scene.file};
    entry.ForEachSkin(
        [&work](int node, const ZSkin& skin, const SavedWeights&) { work.versions[node] = skin.GetVersion(); });
    return work;
}

void ZDocuments::WriteSave(ZSaveWork& work, const std::stop_token& stop)
{
    work.how.stop = stop;
    const std::string extension = gltf::ExtensionOf(work.path);
    if (work.isForeign && extension != ".glb" && extension != ".gltf")
        throw gltf::FileError(work.path, "", "a character made of another kind of file is saved as .glb or .gltf");
    if (work.isForeign && extension == ".gltf")
        work.file = std::make_shared<const gltf::CharacterFile>(skindesk::imports::AsGltfText(*work.file));
    gltf::SaveReport report = gltf::WriteCharacter(*work.file, std::move(work.edits), work.how, work.path);
    report.warnings.insert(report.warnings.begin(), work.report.warnings.begin(), work.report.warnings.end());
    work.report = std::move(report);
}

gltf::SaveReport ZDocuments::FinishSave(ZSaveWork work)
{
    for (const auto& entry : m_entries) {
        if (entry->scene.document != work.document)
            continue;
        if (work.ownFile)
            entry->stamp = work.report.stamp;
        if (work.asCopy)
            continue;
        if (work.isForeign || entry->isNew) {
            entry->path = work.path;
            entry->stamp = work.report.stamp;
        }
        entry->isNew = false;
        entry->ForEachSkin([&work](int node, ZSkin& skin, SavedWeights& saved) {
            if (skin.GetVersion() == work.versions[node])
                saved.NoteSaved(skin);
        });
    }
    return std::move(work.report);
}

std::vector<ZLimitLine> ZDocuments::LimitReport(int maxInfluences)
{
    std::vector<ZLimitLine> lines;
    for (const auto& entry : m_entries) {
        std::vector<std::string> warnings;
        bool lostBones = false;
        const gltf::CharacterEdits edits = ZGltfScene_CollectEdits(entry->scene, warnings, &lostBones);
        for (const gltf::LimitLine& line : gltf::LimitReport(entry->scene.file, edits, maxInfluences)) {
            const int fileSkin = entry->scene.file.nodes[static_cast<size_t>(line.node)].skin;
            const auto& joints = entry->scene.file.skins[static_cast<size_t>(fileSkin)].joints;
            std::vector<int> nodes(joints.begin(), joints.end());
            for (const gltf::AddedJoint& added : edits.addedJoints)
                if (added.skin == fileSkin)
                    nodes.push_back(added.node);
            const ZModel* const bone = entry->scene.ModelOf(nodes[line.joint]);
            lines.push_back({entry->scene.ModelOf(line.node), bone != nullptr ? bone->GetObjectName() : std::string(),
                             static_cast<int>(line.vertices), line.weight});
        }
    }
    return lines;
}

void ZDocuments::Clear()
{
    m_session.ClearScene();
    m_entries.clear();
}

/// Every skin is asked, also behind one that is changed: each remembers what it answered.
void ZDocuments::BringChangesUpToDate()
{
    const ZUndoStack& history = *ZUndoStack::TheOne();
    const bool isGesture = history.IsTransactionOpen();
    const bool canRedo = history.GetRedoCount() > 0;
    for (const auto& entry : m_entries) {
        entry->isChanged = entry->isNew;
        entry->ForEachSkin([&](int, ZSkin& skin, SavedWeights& saved) {
            entry->isChanged |= saved.IsChanged(skin, canRedo || m_couldRedo, isGesture);
        });
    }
    if (!isGesture)
        m_couldRedo = canRedo;
}

const std::vector<ZDocument>& ZDocuments::GetDocuments()
{
    BringChangesUpToDate();
    m_listed.clear();
    for (const auto& entry : m_entries)
        m_listed.push_back({entry->scene.document, entry->path, entry->isChanged, entry->isNew});
    return m_listed;
}

bool ZDocuments::HasUnsavedChanges()
{
    BringChangesUpToDate();
    for (const auto& entry : m_entries)
        if (entry->isChanged)
            return true;
    return false;
}

const ZDocuments::Entry* ZDocuments::FindEntry(int document) const
{
    for (const auto& entry : m_entries)
        if (entry->scene.document == document)
            return entry.get();
    return nullptr;
}

bool ZDocuments::ChangedByOthers(int document) const
{
    const Entry* const entry = FindEntry(document);
    return entry != nullptr && gltf::ChangedOnDisk(entry->path, entry->stamp);
}

int ZDocuments::GetFileMesh(const ZModel& model) const
{
    const Entry* const entry = FindEntry(model.GetDocument());
    if (entry == nullptr || model.GetFileNode() < 0)
        return -1;
    return entry->scene.file.nodes[static_cast<size_t>(model.GetFileNode())].mesh;
}

std::vector<std::pair<int, std::span<const std::int32_t>>> ZDocuments::GetFileVertices(const ZModel& model) const
{
    std::vector<std::pair<int, std::span<const std::int32_t>>> primitives;
    const int meshIndex = GetFileMesh(model);
    if (meshIndex < 0)
        return primitives;
    const Entry* const entry = FindEntry(model.GetDocument());
    const gltf::Mesh& mesh = entry->scene.file.meshes[static_cast<size_t>(meshIndex)];
    for (size_t i = 0; i < mesh.primitives.size(); ++i)
        primitives.emplace_back(static_cast<int>(i), mesh.FileVertices(i));
    return primitives;
}
