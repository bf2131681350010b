// SPDX-License-Identifier: MIT
// Model: meshes, surfaces, bones and nodes of the scene.
#include "Bindings.h"
#include "SkinRef.h"
#include "zmodel/ZGeometryModels.h"

#include <pybind11/stl.h>

namespace {
const char* KindOf(const ZModel& model)
{
    switch (model.GetKind()) {
    case ZModelKind::Polymesh:
        return "polymesh";
    case ZModelKind::Nurbs:
        return "nurbs";
    case ZModelKind::Bone:
        return "bone";
    case ZModelKind::Node:
        break;
    }
    return model.IsBone() ? "bone" : "node";
}

py::object Children(const ModelRef& ref)
{
    std::vector<ZModel*> children;
    for (ZTransformNode* const child : ref.Get().GetChildren())
        if (ZModel* const model = Object_Cast<ZModel>(child))
            children.push_back(model);
    return ref.GetDoor().Wrap(children);
}

py::object ControlNet(const ModelRef& ref)
{
    const ZModelNurbs* const surface = Object_Cast<ZModelNurbs>(&ref.Get());
    if (surface == nullptr)
        return py::none();
    return py::make_tuple(surface->GetSurface().countU, surface->GetSurface().countV);
}

py::array_t<float> Positions(const ModelRef& ref)
{
    IModelGeometry& geometry = ref.Get().Geometry();
    return ArrayOf(geometry.VertexPositions(1), geometry.VertexCount(), 4);
}

py::array_t<float> Normals(const ModelRef& ref)
{
    IModelGeometry& geometry = ref.Get().Geometry();
    return ArrayOf(geometry.DisplayPositions(1), geometry.VertexCount(), 4);
}

py::list Polygons(const ModelRef& ref)
{
    IModelGeometry& geometry = ref.Get().Geometry();
    const int count = geometry.PolygonCount();
    const int* index = geometry.PolygonIndices(0);
    py::list polygons(static_cast<size_t>(index != nullptr ? count : 0));
    std::vector<int> polygon;
    for (size_t i = 0; i < polygons.size(); ++i) {
        polygon.clear();
        // The last vertex of each polygon is stored as its complement.
        for (; *index >= 0; ++index)
            polygon.push_back(*index);
        polygon.push_back(~*index++);
        polygons[i] = polygon;
    }
    return polygons;
}

py::list FileVertices(const ModelRef& ref)
{
    py::list primitives;
    for (const auto& [primitive, vertices] : ref.GetDoor().Documents().GetFileVertices(ref.Get()))
        primitives.append(py::make_tuple(primitive, ArrayOf(vertices.data(), static_cast<int>(vertices.size()))));
    return primitives;
}

void Select(const ModelRef& ref)
{
    ZModel& model = ref.Get();
    for (ZModel* const other : ref.GetDoor().Session().GetScene().GetModels())
        if (other != &model && other->IsSelected())
            other->SetSelected(false);
    model.SetSelected(true);
    ref.GetDoor().Finish();
}

void Delete(const ModelRef& ref)
{
    ref.GetDoor().Session().GetScene().DeleteModel(&ref.Get());
    ref.GetDoor().Finish();
}

std::string Representation(const ModelRef& ref)
{
    if (!ref.GetDoor().IsOpen() || !ref.IsValid())
        return "<skindesk.Model, no longer in the scene>";
    const ZModel& model = ref.Get();
    return std::string("<skindesk.Model ") + KindOf(model) + " \"" + model.GetPath() + "\">";
}
} // namespace

void BindModel(py::module_& module)
{
    py::class_<ModelRef, std::shared_ptr<ModelRef>>(
        module, "Model", "What the scene shows: a polygon mesh, a NURBS surface, a bone or a plain node.")
        .def_property_readonly(
            "name", [](const ModelRef& ref) { return ref.Get().GetObjectName(); },
            "The node's name in its file, else the mesh's, else node_<index>.")
        .def_property_readonly(
            "path", [](const ModelRef& ref) { return ref.Get().GetPath(); },
            "Names joined by / from the root; the second sibling of one name is told apart by [2], and so on.")
        .def_property_readonly(
            "kind", [](const ModelRef& ref) { return KindOf(ref.Get()); },
            "\"polymesh\", \"nurbs\", \"bone\" or \"node\". A joint that shows a mesh is a \"polymesh\".")
        .def_property_readonly(
            "parent",
            [](const ModelRef& ref) { return ref.GetDoor().Wrap(Object_Cast<ZModel>(ref.Get().GetParent())); },
            "The model above, or None.")
        .def_property_readonly("children", &Children, "The models below, in order.")
        .def_property_readonly("control_net", &ControlNet,
                               "(nU, nV), the numbers of control points of a NURBS surface; None for other models.")
        .def_property_readonly("positions", &Positions,
                               "n x 4 float32: x, y, z, 1 of each vertex (control point) as it is deformed now, in the "
                               "model's own space; positions @ global_matrix is its place in the scene.")
        .def_property_readonly("normals", &Normals,
                               "n x 4 float32: unit normal and 0 of each vertex as it is deformed now.")
        .def_property_readonly("polygons", &Polygons, "The vertex numbers of each polygon, a list of lists.")
        .def_property_readonly(
            "global_matrix", [](const ModelRef& ref) { return ArrayOf(ref.Get().Geometry().GlobalTransform()); },
            "4 x 4 float64 for row vectors: the node's own place in the scene.")
        .def_property_readonly(
            "scaling",
            [](const ModelRef& ref) { return TripleOf(ZTransformNode::GetScalingVector(&ref.Get(), true, nullptr)); },
            "The three factors of global scaling.")
        .def_property(
            "hidden", [](const ModelRef& ref) { return ref.Get().IsHidden(); },
            [](const ModelRef& ref, bool hidden) {
                ref.Get().SetHidden(hidden);
                ref.GetDoor().Finish();
            },
            "Not shown, and not taken by tools.")
        .def_property(
            "locked", [](const ModelRef& ref) { return ref.Get().IsLocked(); },
            [](const ModelRef& ref, bool locked) {
                ref.Get().SetLocked(locked);
                ref.GetDoor().Finish();
            },
            "Not taken by tools.")
        .def("select", &Select, "Selects this model alone in the scene, as a click on it does.")
        .def("delete", &Delete,
             "Takes the model out of the scene; its children go to its parent. The file keeps its node. Waits for the "
             "end of a gesture that is under way.")
        .def_property_readonly(
            "file_vertices", &FileVertices,
            "For each primitive of the mesh in its file (primitive index, int32 array: vertex of the "
            "file -> vertex of the model).")
        .def_property_readonly(
            "skin",
            [](const std::shared_ptr<ModelRef>& ref) {
                return ref->Get().GetSkin() != nullptr ? py::cast(SkinRef(ref)) : py::object(py::none());
            },
            "The model's skin, or None.")
        .def("__repr__", &Representation);
}
