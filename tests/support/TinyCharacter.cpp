// SPDX-License-Identifier: MIT
#include "support/TinyCharacter.h"

ZModel* TinyCharacter::AddBone(const ZgeVector3& place, ZModel* parent)
{
    auto bone = std::make_unique<ZModel>(("Bone" + std::to_string(bones.size())).c_str(), ZModelKind::Bone);
    bone->SetBone(true);
    if (parent != nullptr)
        bone->SetParent(parent);
    bone->SetFileTransform(ZgeTranslation(place));
    bones.push_back(scene.AddModel(std::move(bone)));
    return bones.back();
}

void TinyCharacter::AddBones(int count)
{
    for (int i = 0; i < count; ++i)
        AddBone({static_cast<double>(bones.size()), 0, 0});
}

void TinyCharacter::LinkAllBones(ZModelGeometryBase& model, int deformMode)
{
    ZSkin* const skin = model.MakeSkin(deformMode);
    for (ZModel* const bone : bones)
        skin->AppendLink(bone, ZgeInverse(bone->GetTransformMatrix(true)));
}

ZModelPolymesh* TinyCharacter::AddMesh(const std::string& name, int vertexCount, int deformMode)
{
    std::vector<float> positions;
    std::vector<int> polygon;
    for (int vertex = 0; vertex < vertexCount; ++vertex) {
        positions.insert(positions.end(), {static_cast<float>(vertex), 0.0F, 0.0F});
        polygon.push_back(vertex);
    }
    auto mesh = std::make_unique<ZModelPolymesh>(name.c_str());
    mesh->SetGeometry(positions.data(), vertexCount, polygon, {vertexCount});
    LinkAllBones(*mesh, deformMode);
    ZModelPolymesh* const result = mesh.get();
    scene.AddModel(std::move(mesh));
    return result;
}

ZModelNurbs* TinyCharacter::AddSurface(const std::string& name, int countU, int countV, int gridWidth, int gridHeight)
{
    ZNurbsSurface surface;
    surface.degreeU = 1;
    surface.degreeV = 1;
    surface.countU = countU;
    surface.countV = countV;
    const auto makeKnots = [](int count) {
        std::vector<double> knots{0.0};
        for (int i = 0; i < count; ++i)
            knots.push_back(i);
        knots.push_back(count - 1);
        return knots;
    };
    surface.knotsU = makeKnots(countU);
    surface.knotsV = makeKnots(countV);
    for (int v = 0; v < countV; ++v)
        for (int u = 0; u < countU; ++u)
            surface.points.insert(surface.points.end(), {static_cast<double>(u), static_cast<double>(v), 0.0});
    auto model = std::make_unique<ZModelNurbs>(name.c_str());
    model->SetSurface(surface, gridWidth, gridHeight);
    LinkAllBones(*model, kDeformNormalise);
    ZModelNurbs* const result = model.get();
    scene.AddModel(std::move(model));
    return result;
}

void TinyCharacter::Weight(ZModel* model, int link, int vertex, double weight)
{
    ZSkin* const skin = model->GetSkin();
    skin->BeginLink(link);
    skin->AddEntry(vertex, weight);
    skin->EndLink();
}

double TinyCharacter::WeightOf(ZModel* model, int link, int vertex)
{
    ZSkin* const skin = model->GetSkin();
    skin->BeginLink(link);
    const int entry = skin->FindEntry(vertex);
    const double weight = entry >= 0 ? skin->EntryWeight(entry) : -1.0;
    skin->EndLink();
    return weight;
}

int TinyCharacter::EntriesOf(ZModel* model, int vertex)
{
    int count = 0;
    for (int link = 0; link < model->GetSkin()->LinkCount(); ++link)
        for (const int found : model->GetSkin()->GetEntryVertices(link))
            count += found == vertex ? 1 : 0;
    return count;
}

std::vector<std::vector<double>> TinyCharacter::Weights(ZModel* model)
{
    ZSkin* const skin = model->GetSkin();
    const auto linkCount = static_cast<size_t>(skin->LinkCount());
    std::vector<std::vector<double>> rows(static_cast<size_t>(skin->GetVertexCount()), std::vector<double>(linkCount));
    for (size_t link = 0; link < linkCount; ++link) {
        const ZArrayTemplate<int>& vertices = skin->GetEntryVertices(static_cast<int>(link));
        const ZArrayTemplate<double>& weights = skin->GetEntryWeights(static_cast<int>(link));
        for (int entry = 0; entry < vertices.GetCount(); ++entry)
            rows[static_cast<size_t>(vertices[entry])][link] += weights[entry];
    }
    return rows;
}
