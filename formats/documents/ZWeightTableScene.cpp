// SPDX-License-Identifier: MIT
// Weight tables out of the scene, and into it as one undo step.
#include "bcore/ZSession.h"
#include "documents/ZDocuments.h"
#include "documents/ZGltfScene.h"
#include "documents/ZWeightTable.h"
#include "gltf/FileBytes.h"
#include "object/ZUndoStack.h"
#include "zmodel/ZSkin.h"

#include <algorithm>
#include <filesystem>
#include <unordered_map>

using skindesk::gltf::FileError;

namespace {

/// The weights of some vertices of one skin, vertex after vertex.
struct VertexWeights
{
    std::vector<int> vertices;
    std::vector<int> ends; ///< where each vertex's entries end
    std::vector<int> links;
    std::vector<double> weights;

    void EndVertex(int vertex)
    {
        vertices.push_back(vertex);
        ends.push_back(static_cast<int>(links.size()));
    }
};

/// How the bones of a skin are named in a table: by name where that is unique among its links, else by path.
class BoneNames
{
public:
    explicit BoneNames(ZSkin& skin)
    {
        std::unordered_map<std::string, int> uses;
        for (int link = 0; link < skin.LinkCount(); ++link)
            if (const ZModel* const bone = skin.LinkModel(link))
                ++uses[bone->GetObjectName()];
        for (int link = 0; link < skin.LinkCount(); ++link) {
            const ZModel* const bone = skin.LinkModel(link);
            std::string name;
            if (bone != nullptr)
                name = uses[bone->GetObjectName()] == 1 ? bone->GetObjectName() : bone->GetPath();
            m_links.emplace(name, link); // of two links on one bone the first answers
            m_names.push_back(std::move(name));
        }
    }
    const std::string& NameOf(int link) const { return m_names[static_cast<size_t>(link)]; }
    int LinkOf(const std::string& name) const
    {
        const auto found = m_links.find(name);
        return found != m_links.end() ? found->second : -1;
    }

private:
    std::vector<std::string> m_names;
    std::unordered_map<std::string, int> m_links;
};

/// Gives each vertex exactly these weights: entries that are there are set, others become 0, missing ones are added.
/// Answers what the vertices had before.
VertexWeights WriteWeights(ZSkin& skin, const VertexWeights& wanted)
{
    std::vector<int> offsets, links;
    std::vector<double> weights;
    skin.BuildCsr(offsets, links, weights);
    VertexWeights before;
    struct Write
    {
        int vertex;
        double weight;
    };
    std::vector<std::vector<Write>> byLink(static_cast<size_t>(skin.LinkCount()));
    int at = 0;
    for (size_t i = 0; i < wanted.vertices.size(); ++i) {
        const int vertex = wanted.vertices[i];
        for (int old = offsets[static_cast<size_t>(vertex)]; old < offsets[static_cast<size_t>(vertex) + 1]; ++old) {
            const auto link = static_cast<size_t>(links[static_cast<size_t>(old)]);
            before.links.push_back(static_cast<int>(link));
            before.weights.push_back(weights[static_cast<size_t>(old)]);
            byLink[link].push_back({vertex, 0.0});
        }
        before.EndVertex(vertex);
        for (; at < wanted.ends[i]; ++at)
            byLink[static_cast<size_t>(wanted.links[static_cast<size_t>(at)])].push_back(
                {vertex, wanted.weights[static_cast<size_t>(at)]});
    }
    for (size_t link = 0; link < byLink.size(); ++link) {
        if (byLink[link].empty())
            continue;
        skin.BeginLink(static_cast<int>(link));
        for (const Write& write : byLink[link]) {
            const int entry = skin.FindEntry(write.vertex);
            if (entry >= 0)
                skin.SetEntryWeight(write.weight, entry);
            else
                skin.AddEntry(write.vertex, write.weight);
        }
        skin.EndLink();
    }
    return before;
}

/// Weights that came from a table: swaps what the skin has with what it had.
class WeightTableUndo : public IUndo
{
public:
    WeightTableUndo(ZModel* model, VertexWeights before) : m_before(std::move(before)) { m_model.Set(model); }

    void* IQuery(int interfaceId, int) override
    {
        return interfaceId == kInterfaceObject || interfaceId == kInterfaceUndo ? this : nullptr;
    }
    void Destroy() override { delete this; }
    bool IsEmpty() override { return m_before.vertices.empty(); }
    void TransactionClosed() override {}
    void Undo() override { Swap(); }
    void Redo() override { Swap(); }
    const char* GetName() override { return "WeightTableUndo"; }

private:
    void Swap()
    {
        ZPlug* const plug = m_model.Get();
        auto* const model = plug != nullptr ? Object_Cast<ZModel>(plug->GetPlugOwner()) : nullptr;
        if (model != nullptr && model->GetSkin() != nullptr)
            m_before = WriteWeights(*model->GetSkin(), m_before);
    }

    HdlZPlug m_model;
    VertexWeights m_before;
};

void CheckStop(const std::stop_token& stop, const std::string& path)
{
    if (stop.stop_requested())
        throw FileError(path, "", "was stopped before it was done; nothing has changed");
}

/// One skinned model as far as a table needs it, on whatever thread.
struct TableModel
{
    explicit TableModel(ZSkin& skin)
        : names(skin), vertexCount(skin.GetVertexCount()), linkVersion(skin.GetLinkVersion())
    {
    }
    BoneNames names;
    int vertexCount;
    std::uint64_t linkVersion;
    std::vector<int> offsets, links; ///< of an export: its weights, vertex by vertex
    std::vector<double> weights;
    bool isRead = false; ///< of an import: the table has rows for it
    VertexWeights wanted;
};

std::vector<ZWeightRow> RowsOf(const TableModel& model, const std::stop_token& stop, const std::string& path)
{
    std::vector<ZWeightRow> rows;
    for (int vertex = 0; vertex < model.vertexCount; ++vertex) {
        CheckStop(stop, path);
        const size_t before = rows.size();
        for (int at = model.offsets[static_cast<size_t>(vertex)]; at < model.offsets[static_cast<size_t>(vertex) + 1];
             ++at)
            if (model.weights[static_cast<size_t>(at)] != 0.0)
                rows.push_back({vertex, model.names.NameOf(model.links[static_cast<size_t>(at)]),
                                model.weights[static_cast<size_t>(at)]});
        if (rows.size() == before)
            rows.push_back({vertex, std::string(), 0.0});
    }
    return rows;
}

/// Sorts a model's rows by vertex and turns names into links; what does not match goes to the report.
VertexWeights Match(const std::string& path, const TableModel& model, const std::vector<ZWeightRow>& rows,
                    ZImportReport& report)
{
    std::vector<const ZWeightRow*> sorted;
    std::map<std::string, int> unknownBones;
    int unknownVertices = 0;
    for (const ZWeightRow& row : rows) {
        if (row.vertex < model.vertexCount)
            sorted.push_back(&row);
        else
            ++unknownVertices;
    }
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const ZWeightRow* a, const ZWeightRow* b) { return a->vertex < b->vertex; });
    VertexWeights wanted;
    for (size_t i = 0; i < sorted.size(); ++i) {
        const int link = model.names.LinkOf(sorted[i]->bone);
        if (link >= 0 && !sorted[i]->bone.empty()) {
            wanted.links.push_back(link);
            wanted.weights.push_back(sorted[i]->weight);
        } else if (!sorted[i]->bone.empty()) {
            ++unknownBones[sorted[i]->bone];
        }
        if (i + 1 == sorted.size() || sorted[i + 1]->vertex != sorted[i]->vertex)
            wanted.EndVertex(sorted[i]->vertex);
    }
    for (const auto& [bone, count] : unknownBones)
        report.unmatched.push_back(path + ": no bone \"" + bone + "\" in its skin (" + std::to_string(count) +
                                   " rows)");
    if (unknownVertices > 0)
        report.unmatched.push_back(path + ": " + std::to_string(unknownVertices) + " rows name vertices beyond its " +
                                   std::to_string(model.vertexCount));
    return wanted;
}

bool IsJson(const std::string& path)
{
    const std::string extension = std::filesystem::path(path).extension().string();
    if (extension == ".json")
        return true;
    if (extension == ".csv")
        return false;
    throw FileError(path, "", "is neither .csv nor .json, the two forms of weight tables");
}

std::unordered_map<std::string, ZModel*> SkinnedModels(const ZScene& scene)
{
    std::unordered_map<std::string, ZModel*> models;
    for (ZModel* const model : scene.GetModels())
        if (model->GetSkin() != nullptr)
            models.emplace(model->GetPath(), model);
    return models;
}

} // namespace

struct ZTableWork
{
    std::string path;
    bool json = false;
    std::map<std::string, TableModel> models; ///< by path in the scene
    ZImportReport report;
};

std::shared_ptr<ZTableWork> ZDocuments::PrepareTable(const std::string& path, bool withWeights)
{
    auto work = std::make_shared<ZTableWork>();
    work->path = path;
    work->json = IsJson(path);
    for (const auto& [name, model] : SkinnedModels(m_session.GetScene())) {
        ZSkin& skin = *model->GetSkin();
        TableModel& taken = work->models.emplace(name, skin).first->second;
        if (withWeights)
            skin.BuildCsr(taken.offsets, taken.links, taken.weights);
    }
    return work;
}

void ZDocuments::ExportWeights(const std::string& path) { WriteTable(*PrepareExport(path)); }

std::shared_ptr<ZTableWork> ZDocuments::PrepareExport(const std::string& path) { return PrepareTable(path, true); }

void ZDocuments::WriteTable(ZTableWork& work, const std::stop_token& stop)
{
    ZWeightTable table;
    for (const auto& [name, model] : work.models)
        table[name] = RowsOf(model, stop, work.path);
    const std::string text = work.json ? ZWeightTable_ToJson(table) : ZWeightTable_ToCsv(table);
    CheckStop(stop, work.path);
    const std::span<const std::uint8_t> bytes(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
    skindesk::gltf::ReplaceFile(work.path, {&bytes, 1});
}

ZImportReport ZDocuments::ImportWeights(const std::string& path)
{
    const std::shared_ptr<ZTableWork> work = PrepareImport(path);
    ReadTable(*work);
    return FinishImport(*work);
}

std::shared_ptr<ZTableWork> ZDocuments::PrepareImport(const std::string& path) { return PrepareTable(path, false); }

void ZDocuments::ReadTable(ZTableWork& work, const std::stop_token& stop)
{
    const skindesk::gltf::ByteBlock bytes = skindesk::gltf::ReadWholeFile(work.path, work.path);
    const std::string_view text(reinterpret_cast<const char*>(bytes.Span().data()), bytes.Size());
    const ZWeightTable table =
        work.json ? ZWeightTable_FromJson(text, work.path) : ZWeightTable_FromCsv(text, work.path, stop);
    for (const auto& [name, rows] : table) {
        CheckStop(stop, work.path);
        work.report.rowsRead += static_cast<int>(rows.size());
        const auto found = work.models.find(name);
        if (found == work.models.end()) {
            work.report.unmatched.push_back("no skinned model \"" + name + "\" in the scene");
            continue;
        }
        found->second.isRead = true;
        found->second.wanted = Match(name, found->second, rows, work.report);
    }
}

ZImportReport ZDocuments::FinishImport(ZTableWork& work)
{
    const auto models = SkinnedModels(m_session.GetScene());
    for (const auto& [name, read] : work.models) {
        if (!read.isRead)
            continue;
        const auto found = models.find(name);
        if (found == models.end() || found->second->GetSkin()->GetLinkVersion() != read.linkVersion)
            throw FileError(work.path, "", "cannot be read: the model \"" + name + "\" has changed meanwhile");
        if (found->second->IsBeingEdited())
            throw FileError(work.path, "", "cannot be read while a tool holds the model \"" + name + "\"");
    }
    ZImportReport report = std::move(work.report);
    ZUndoStack& undo = *ZUndoStack::TheOne();
    undo.TransactionBegin("Import Weights", false);
    for (const auto& [name, read] : work.models) {
        if (!read.isRead)
            continue;
        ZModel* const model = models.at(name);
        report.verticesChanged += static_cast<int>(read.wanted.vertices.size());
        undo.TransactionAdd(new WeightTableUndo(model, WriteWeights(*model->GetSkin(), read.wanted)));
    }
    undo.TransactionEnd(false, false);
    return report;
}
