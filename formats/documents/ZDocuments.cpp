// SPDX-License-Identifier: MIT
#include "documents/ZDocuments.h"

#include "bcore/ZSession.h"
#include "documents/ZGltfScene.h"
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
    std::map<int, std::uint64_t> savedVersions; ///< by node: the skin's version at the last saving or opening
    gltf::FileStamp stamp;                      ///< of the file at `path` as we know it

    bool HasUnsavedChanges() const
    {
        for (const auto& [node, version] : savedVersions) {
            const ZModel* const model = scene.ModelOf(node);
            if (model != nullptr && model->GetSkin() != nullptr && model->GetSkin()->GetVersion() != version)
                return true;
        }
        return false;
    }
    void NoteSaved()
    {
        for (auto& [node, version] : savedVersions)
            if (const ZModel* const model = scene.ModelOf(node); model != nullptr && model->GetSkin() != nullptr)
                version = model->GetSkin()->GetVersion();
    }
};

namespace {

bool IsSameFile(const std::string& a, const std::string& b)
{
    std::error_code failed;
    const bool same = std::filesystem::equivalent(a, b, failed);
    return failed ? a == b : same;
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

std::vector<ZModel*> ZDocuments::Open(const std::string& path)
{
    auto entry = std::make_unique<Entry>();
    entry->path = path;
    entry->scene.document = m_nextId;
    entry->scene.file = gltf::ReadCharacter(path);
    entry->stamp = gltf::OpenedStamp(entry->scene.file);
    ++m_nextId;
    ZGltfScene_Add(m_session.GetScene(), entry->scene);

    const std::string file = std::filesystem::path(path).filename().string();
    for (const std::string& warning : entry->scene.file.warnings)
        ZReport_Warning(file + ": " + warning);
    std::vector<ZModel*> geometry;
    for (size_t node = 0; node < entry->scene.models.size(); ++node) {
        ZModel* const model = entry->scene.ModelOf(static_cast<int>(node));
        if (model->HasGeometry())
            geometry.push_back(model);
        if (entry->scene.skinVersions[node] != 0)
            entry->savedVersions[static_cast<int>(node)] = entry->scene.skinVersions[node];
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
        if (entry->path == source || IsSameFile(entry->path, source)) {
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
    if (ZUndoStack::TheOne()->IsTransactionOpen())
        throw gltf::FileError(path, "", "cannot be saved in the middle of a gesture");
    Entry& entry = FindSource(options.source);
    const bool ownFile = IsSameFile(path, entry.path);
    if (ownFile)
        AskIfChanged(path, entry.stamp);

    std::vector<std::string> warnings;
    gltf::SaveOptions how;
    how.maxInfluences = options.maxInfluences;
    how.keepTypes = options.keepTypes;
    how.tieSeams = options.tieSeams;
    const gltf::CharacterEdits edits = ZGltfScene_CollectEdits(entry.scene, warnings, &how.renormalise);
    gltf::SaveReport report = gltf::WriteCharacter(entry.scene.file, edits, how, path);
    report.warnings.insert(report.warnings.begin(), warnings.begin(), warnings.end());
    if (ownFile)
        entry.stamp = report.stamp;
    if (!options.asCopy)
        entry.NoteSaved();
    return report;
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

const std::vector<ZDocument>& ZDocuments::GetDocuments()
{
    m_listed.clear();
    for (const auto& entry : m_entries)
        m_listed.push_back({entry->scene.document, entry->path, entry->HasUnsavedChanges()});
    return m_listed;
}

bool ZDocuments::HasUnsavedChanges()
{
    for (const auto& entry : m_entries)
        if (entry->HasUnsavedChanges())
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

std::vector<std::pair<int, std::span<const std::int32_t>>> ZDocuments::GetFileVertices(const ZModel& model) const
{
    std::vector<std::pair<int, std::span<const std::int32_t>>> primitives;
    const Entry* const entry = FindEntry(model.GetDocument());
    if (entry == nullptr || model.GetFileNode() < 0)
        return primitives;
    const int meshIndex = entry->scene.file.nodes[static_cast<size_t>(model.GetFileNode())].mesh;
    if (meshIndex < 0)
        return primitives;
    const gltf::Mesh& mesh = entry->scene.file.meshes[static_cast<size_t>(meshIndex)];
    for (size_t i = 0; i < mesh.primitives.size(); ++i)
        primitives.emplace_back(static_cast<int>(i), mesh.FileVertices(i));
    return primitives;
}
