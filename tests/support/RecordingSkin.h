// SPDX-License-Identifier: MIT
// A skin that writes down what is called on it, and a model that answers it.
#pragma once

#include "zmodel/ZGeometryModels.h"

#include <string>
#include <vector>

/// Passes every call on to a real skin and keeps it as text: "BeginLink(1)", "AddEntry(3, 0.5)". It answers no arrays,
/// so whoever reads it asks entry by entry.
class RecordingSkin : public ISkinLinks
{
public:
    explicit RecordingSkin(ZSkin& skin) : m_skin(skin) {}

    void BeginLink(int link) override;
    void EndLink() override;
    void RemoveLink(int link) override;
    int LinkCount() override { return m_skin.LinkCount(); }
    ZModel* LinkModel(int link) override { return m_skin.LinkModel(link); }
    int AddLink(ZModel* bone) override;
    void AddEntry(int vertex, double weight) override;
    int EntryCount() override;
    int EntryVertex(int entry) override { return m_skin.EntryVertex(entry); }
    double EntryWeight(int entry) override { return m_skin.EntryWeight(entry); }
    void SetEntryWeight(double weight, int entry) override;
    void ClearEntries() override;
    int FindEntry(int vertex) override;
    void LinkBindTransform(ZgeVector4& translation, ZgeVector3& rotation, ZgeVector3& scaling) override;
    void SetLinkBindTransform(const ZgeVector4& translation, const ZgeVector3& rotation,
                              const ZgeVector3& scaling) override;
    void ResetLinkOption(int option) override;
    int DeformMode() override;
    void SetSkinDisplayValue(double value) override;

    /// Everything but the questions about links (LinkCount, LinkModel) and about single entries.
    std::vector<std::string> calls;

private:
    ZSkin& m_skin;
};

/// A mesh that hands out a recorder in place of its skin.
class RecordedMesh : public ZModelPolymesh
{
public:
    RecordedMesh(const char* name, int vertexCount, int deformMode);
    ~RecordedMesh() override;
    void* IQuery(int interfaceId, int flags) override;
    RecordingSkin& Recorder() { return *m_recorder; }

private:
    std::unique_ptr<RecordingSkin> m_recorder;
};
