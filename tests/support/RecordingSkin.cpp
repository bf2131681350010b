// SPDX-License-Identifier: MIT
#include "support/RecordingSkin.h"

#include <sstream>

namespace {
template <class... Values> std::string Call(const char* name, Values... values)
{
    std::ostringstream text;
    const char* separator = "";
    text << name << '(';
    ((text << separator << values, separator = ", "), ...);
    text << ')';
    return text.str();
}
} // namespace

void RecordingSkin::BeginLink(int link)
{
    calls.push_back(Call("BeginLink", link));
    m_skin.BeginLink(link);
}

void RecordingSkin::EndLink()
{
    calls.push_back("EndLink");
    m_skin.EndLink();
}

void RecordingSkin::RemoveLink(int link)
{
    calls.push_back(Call("RemoveLink", link));
    m_skin.RemoveLink(link);
}

int RecordingSkin::AddLink(ZModel* bone)
{
    calls.push_back("AddLink");
    return m_skin.AddLink(bone);
}

void RecordingSkin::AddEntry(int vertex, double weight)
{
    calls.push_back(Call("AddEntry", vertex, weight));
    m_skin.AddEntry(vertex, weight);
}

int RecordingSkin::EntryCount()
{
    calls.push_back("EntryCount");
    return m_skin.EntryCount();
}

void RecordingSkin::SetEntryWeight(double weight, int entry)
{
    calls.push_back(Call("SetEntryWeight", weight, entry));
    m_skin.SetEntryWeight(weight, entry);
}

void RecordingSkin::ClearEntries()
{
    calls.push_back("ClearEntries");
    m_skin.ClearEntries();
}

int RecordingSkin::FindEntry(int vertex)
{
    calls.push_back(Call("FindEntry", vertex));
    return m_skin.FindEntry(vertex);
}

void RecordingSkin::LinkBindTransform(ZgeVector4& translation, ZgeVector3& rotation, ZgeVector3& scaling)
{
    calls.push_back("LinkBindTransform");
    m_skin.LinkBindTransform(translation, rotation, scaling);
}

void RecordingSkin::SetLinkBindTransform(const ZgeVector4& translation, const ZgeVector3& rotation,
                                         const ZgeVector3& scaling)
{
    calls.push_back("SetLinkBindTransform");
    m_skin.SetLinkBindTransform(translation, rotation, scaling);
}

void RecordingSkin::ResetLinkOption(int option)
{
    calls.push_back(Call("ResetLinkOption", option));
    m_skin.ResetLinkOption(option);
}

int RecordingSkin::DeformMode()
{
    calls.push_back("DeformMode");
    return m_skin.DeformMode();
}

void RecordingSkin::SetSkinDisplayValue(double value)
{
    calls.push_back(Call("SetSkinDisplayValue", value));
    m_skin.SetSkinDisplayValue(value);
}

RecordedMesh::RecordedMesh(const char* name, int vertexCount, int deformMode) : ZModelPolymesh(name)
{
    const std::vector<float> positions(static_cast<size_t>(vertexCount) * 3, 0.0F);
    SetGeometry(positions.data(), vertexCount, {}, {});
    m_recorder = std::make_unique<RecordingSkin>(*MakeSkin(deformMode));
}

RecordedMesh::~RecordedMesh() = default;

void* RecordedMesh::IQuery(int interfaceId, int flags)
{
    if (interfaceId == kInterfaceSkinLinks)
        return static_cast<ISkinLinks*>(m_recorder.get());
    return ZModelPolymesh::IQuery(interfaceId, flags);
}
