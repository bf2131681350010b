// SPDX-License-Identifier: MIT
#include "DeskFiles.h"

#include <pybind11/stl.h>

#include <algorithm>
#include <optional>

namespace {
using Desk = std::shared_ptr<Door>;

int LimitFrom(const py::object& maxInfluences)
{
    const py::object whole = py::reinterpret_steal<py::object>(PyNumber_Index(maxInfluences.ptr()));
    if (!whole)
        throw py::error_already_set();
    int overflow = 0;
    const long limit = PyLong_AsLongAndOverflow(whole.ptr(), &overflow);
    if (limit < 1 && overflow <= 0)
        throw py::value_error("max_influences must be at least 1, not " + py::repr(whole).cast<std::string>());
    constexpr long kMany = 1 << 20; // more than any vertex has
    return static_cast<int>(overflow > 0 ? kMany : std::min(limit, kMany));
}

/// Which file is meant must be clear before anything is written.
void CheckSource(ZDocuments& documents, const std::string& source)
{
    const std::vector<ZDocument>& open = documents.GetDocuments();
    if (open.empty())
        throw DoorError("no file is open that could be saved");
    if (!source.empty() || open.size() == 1)
        return;
    std::string paths;
    for (const ZDocument& document : open)
        paths += (paths.empty() ? "" : ", ") + document.path;
    throw DoorError(std::to_string(open.size()) + " files are open; source= must say which one is meant: " + paths);
}

py::object OpenFile(const Desk& desk, const py::object& path)
{
    py::object models = desk->Wrap(desk->Documents().Open(PathFrom(path)));
    desk->Finish();
    return models;
}

void Clear(const Desk& desk)
{
    desk->Documents().Clear();
    desk->Finish();
}

py::dict Save(const Desk& desk, const py::object& path, const py::object& source, const py::object& maxInfluences,
              bool keepTypes, bool tieSeams)
{
    ZDocuments& documents = desk->Documents();
    const std::string target = PathFrom(path);
    ZSaveOptions options;
    if (!source.is_none())
        options.source = PathFrom(source);
    if (!maxInfluences.is_none())
        options.maxInfluences = LimitFrom(maxInfluences);
    options.keepTypes = keepTypes;
    options.tieSeams = tieSeams;
    CheckSource(documents, options.source);
    const skindesk::gltf::SaveReport report = documents.Save(target, options);
    py::dict result;
    result["bytes"] = report.bytes;
    result["vertices_changed"] = report.verticesChanged;
    result["vertices_limited"] = report.verticesLimited;
    result["weight_dropped"] = report.weightDropped;
    result["warnings"] = report.warnings;
    desk->Finish();
    return result;
}

/// The model's name where it is the only one of it, else its path: what Desk.model finds again.
std::string ReportName(const Desk& desk, const ZModel* model)
{
    if (model == nullptr)
        return {};
    const auto& models = desk->Session().GetScene().GetModels();
    const auto sameName = std::count_if(models.begin(), models.end(), [model](const ZModel* other) {
        return other->GetObjectName() == model->GetObjectName();
    });
    return sameName == 1 ? model->GetObjectName() : model->GetPath();
}

py::list LimitReport(const Desk& desk, const py::object& maxInfluences)
{
    py::list lines;
    std::unordered_map<const ZModel*, std::string> names;
    for (const ZLimitLine& line : desk->Documents().LimitReport(LimitFrom(maxInfluences))) {
        const auto [name, isNew] = names.try_emplace(line.model);
        if (isNew)
            name->second = ReportName(desk, line.model);
        py::dict entry;
        entry["model"] = name->second;
        entry["bone"] = line.bone;
        entry["vertices"] = line.vertices;
        entry["weight"] = line.weight;
        lines.append(entry);
    }
    return lines;
}

void ExportWeights(const Desk& desk, const py::object& path)
{
    desk->Documents().ExportWeights(PathFrom(path));
    desk->Finish();
}

py::dict ImportWeights(const Desk& desk, const py::object& path)
{
    const ZImportReport report = desk->Documents().ImportWeights(PathFrom(path));
    py::dict result;
    result["vertices_changed"] = report.verticesChanged;
    result["rows_read"] = report.rowsRead;
    result["unmatched"] = report.unmatched;
    desk->Finish();
    return result;
}
} // namespace

void BindDeskFiles(py::class_<Door, Desk>& desk)
{
    desk.def("open", &OpenFile, py::arg("path"),
             "Opens a character into the scene; the file's geometry models by ascending node index. skindesk.FileError "
             "when it cannot be read; the scene is then as it was.")
        .def("clear", &Clear, "Empties the scene, forgets all files and the undo history.")
        .def("save", &Save, py::arg("path"), py::arg("source") = py::none(), py::arg("max_influences") = py::none(),
             py::arg("keep_types") = false, py::arg("tie_seams") = false,
             "Writes the opened file with its weights as they are now. source: the opened file that is meant, needed "
             "when "
             "more than one is open; max_influences: keeps the largest of each vertex; keep_types: keeps the component "
             "type "
             "of the weights; tie_seams: control points at one place get the weights of the first. Returns a dict: "
             "bytes, "
             "vertices_changed (against the file opened), vertices_limited, weight_dropped, warnings. "
             "skindesk.FileError "
             "leaves the old file whole.")
        .def("limit_report", &LimitReport, py::arg("max_influences"),
             "What saving with max_influences would drop: a list of dicts with model, bone, vertices, weight.")
        .def("export_weights", &ExportWeights, py::arg("path"),
             "Writes all weights by vertex and bone name, as CSV or JSON by the path's extension.")
        .def("import_weights", &ImportWeights, py::arg("path"),
             "Reads weights that export_weights wrote, as one undo step; refused while a tool holds one of the models. "
             "Returns a dict: vertices_changed, rows_read, unmatched.");
}
