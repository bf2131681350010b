// SPDX-License-Identifier: MIT
// Skin: links, entries, bind transforms.
#include "Bindings.h"
#include "SkinRef.h"

#include <pybind11/stl.h>

ZSkin& SkinRef::Get() const
{
    ZModel& model = m_model->Get();
    ZSkin* const skin = model.GetSkin();
    if (skin == nullptr)
        throw DoorError("the model \"" + model.GetObjectName() + "\" has no skin any more");
    return *skin;
}

int SkinRef::LinkFrom(const py::object& link) const
{
    return IndexFrom(link, Get().LinkCount(), "link of the skin of \"" + Owner().GetObjectName() + '"');
}

namespace {
const char* ModeName(int mode)
{
    return mode == kDeformAdditive ? "additive" : mode == kDeformTotal100 ? "total100" : "normalise";
}

py::object Links(const SkinRef& ref)
{
    ZSkin& skin = ref.Get();
    std::vector<ZModel*> bones;
    bones.reserve(static_cast<size_t>(skin.LinkCount()));
    for (int link = 0; link < skin.LinkCount(); ++link)
        bones.push_back(skin.LinkModel(link));
    return ref.GetDoor().Wrap(bones);
}

py::tuple Entries(const SkinRef& ref, const py::object& index)
{
    const ZSkin& skin = ref.Get();
    const int link = ref.LinkFrom(index);
    const auto& vertices = skin.GetEntryVertices(link);
    const auto& weights = skin.GetEntryWeights(link);
    return py::make_tuple(ArrayOf(vertices.GetData(), vertices.GetCount()),
                          ArrayOf(weights.GetData(), weights.GetCount()));
}

py::tuple Csr(const SkinRef& ref)
{
    std::vector<int> offsets, links;
    std::vector<double> weights;
    ref.Get().BuildCsr(offsets, links, weights);
    return py::make_tuple(ArrayOf(std::move(offsets)), ArrayOf(std::move(links)), ArrayOf(std::move(weights)));
}

std::tuple<Triple, Triple, Triple> BindTransform(const SkinRef& ref, const py::object& index)
{
    ZSkin& skin = ref.Get();
    ZgeVector4 translation;
    ZgeVector3 rotation, scaling;
    skin.BeginLink(ref.LinkFrom(index));
    skin.LinkBindTransform(translation, rotation, scaling);
    skin.EndLink();
    return {Triple{translation.x, translation.y, translation.z}, TripleOf(rotation), TripleOf(scaling)};
}
} // namespace

void BindSkin(py::module_& module)
{
    py::class_<SkinRef>(module, "Skin",
                        "How strongly each bone pulls each vertex of a model. Weights are fractions of 1.")
        .def_property_readonly(
            "mode", [](const SkinRef& ref) { return ModeName(ref.Get().DeformMode()); },
            "How the bones' pulls add up: \"normalise\", \"additive\" or \"total100\".")
        .def_property_readonly("links", &Links,
                               "The bones, one a link, in the file's joint order; None for a link without a bone.")
        .def("entries", &Entries, py::arg("link"),
             "What one link pulls: (vertices int32, weights float64), copies of equal length.")
        .def("csr", &Csr,
             "All weights by vertex: (offsets, links, weights); those of vertex v are at offsets[v] to offsets[v + 1].")
        .def("bind_transform", &BindTransform, py::arg("link"),
             "The inverse bind matrix of a link as (translation, rotation, scaling), three numbers each; the rotation "
             "in "
             "degrees about X, then Y, then Z.")
        .def(
            "option",
            [](const SkinRef& ref, const py::object& link) { return ref.Get().GetLinkOption(ref.LinkFrom(link)); },
            py::arg("link"), "The link's option; 0: it takes part as the skin's mode says.")
        .def_property_readonly(
            "display_value", [](const SkinRef& ref) { return ref.Get().GetDisplayValue(); },
            "The link whose weights the host's own shading shows; -1: none.");
}
