// SPDX-License-Identifier: MIT
// A scene with a few bones and models of a few vertices, made of the real host objects.
#pragma once

#include "zmodel/ZGeometryModels.h"
#include "zmodel/ZScene.h"

#include <memory>
#include <string>
#include <vector>

/// Bones are named Bone0, Bone1, ... and stand at (index, 0, 0) without parents, unless told otherwise.
class TinyCharacter
{
public:
    ZModel* AddBone(const ZgeVector3& place, ZModel* parent = nullptr);
    /// `count` more bones.
    void AddBones(int count);
    /// A mesh of `vertexCount` vertices at (index, 0, 0), in one polygon, with a skin of that mode that has a link to
    /// each bone that exists so far, in order. No entries.
    ZModelPolymesh* AddMesh(const std::string& name, int vertexCount, int deformMode = kDeformNormalise);
    /// A flat NURBS surface of countU x countV control points with a tessellated grid; its skin as AddMesh makes it.
    ZModelNurbs* AddSurface(const std::string& name, int countU, int countV, int gridWidth = 8, int gridHeight = 8);

    /// Adds an entry to a link of the model's skin.
    static void Weight(ZModel* model, int link, int vertex, double weight);
    /// The weight of an entry; -1 when there is none.
    static double WeightOf(ZModel* model, int link, int vertex);
    /// How many entries a vertex has in the skin.
    static int EntriesOf(ZModel* model, int vertex);
    /// One row a vertex, one number a link; absent entries are 0.
    static std::vector<std::vector<double>> Weights(ZModel* model);

    ZScene scene;
    std::vector<ZModel*> bones;

private:
    void LinkAllBones(ZModelGeometryBase& model, int deformMode);
};
