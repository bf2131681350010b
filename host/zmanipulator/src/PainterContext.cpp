// SPDX-License-Identifier: MIT
#include "ViewerPainter.h"

namespace {
std::uint64_t NextStamp()
{
    // Unlike anything that others keep in a small buffer.
    static std::uint64_t stamp = 0x5b1d5a77c0ffee01U;
    return stamp += 2;
}
} // namespace

PainterContext::PainterContext() : m_stamp(NextStamp())
{
    GLuint names[3] = {0, 0, 0};
    glGenBuffers(3, names);
    m_stampBuffer = names[0];
    m_floorBuffer = names[1];
    m_scratch = names[2];
    glBindBuffer(GL_ARRAY_BUFFER, m_stampBuffer);
    glBufferData(GL_ARRAY_BUFFER, sizeof m_stamp, &m_stamp, GL_STATIC_READ);
    glBindBuffer(GL_ARRAY_BUFFER, 0);
}

bool PainterContext::IsCurrent() const
{
    if (glIsBuffer(m_stampBuffer) != GL_TRUE)
        return false;
    GLint size = 0;
    std::uint64_t stamp = 0;
    glBindBuffer(GL_ARRAY_BUFFER, m_stampBuffer);
    glGetBufferParameteriv(GL_ARRAY_BUFFER, GL_BUFFER_SIZE, &size);
    if (size == sizeof stamp)
        glGetBufferSubData(GL_ARRAY_BUFFER, 0, sizeof stamp, &stamp);
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    return stamp == m_stamp;
}

MeshBuffers& PainterContext::BuffersOf(ZModelGeometryBase& model, bool withEdges)
{
    std::unique_ptr<MeshBuffers>& buffers = m_meshes[&model];
    if (buffers && !buffers->IsOf(&model)) // another model at the address of one that is gone
        buffers->Free();
    if (!buffers || !buffers->IsOf(&model))
        buffers = std::make_unique<MeshBuffers>(model);
    buffers->BringUpToDate(withEdges);
    return *buffers;
}

void PainterContext::FreeForGoneModels()
{
    for (auto entry = m_meshes.begin(); entry != m_meshes.end();) {
        if (entry->second->IsAlive()) {
            ++entry;
            continue;
        }
        entry->second->Free();
        entry = m_meshes.erase(entry);
    }
}

void PainterContext::DrawFloor(const ZFloorGrid& floor)
{
    glBindBuffer(GL_ARRAY_BUFFER, m_floorBuffer);
    if (m_floorPoints == 0 || !(floor == m_floor)) {
        const std::vector<ZFloorPoint> lines = FloorGrid_Lines(floor);
        glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(lines.size() * sizeof lines[0]), lines.data(),
                     GL_STATIC_DRAW);
        m_floorPoints = static_cast<GLsizei>(lines.size());
        m_floor = floor;
    }
    glEnableClientState(GL_VERTEX_ARRAY);
    glEnableClientState(GL_COLOR_ARRAY);
    glVertexPointer(3, GL_FLOAT, sizeof(ZFloorPoint), nullptr);
    glColorPointer(3, GL_FLOAT, sizeof(ZFloorPoint), reinterpret_cast<const void*>(sizeof ZFloorPoint::place));
    glDrawArrays(GL_LINES, 0, m_floorPoints);
    glDisableClientState(GL_COLOR_ARRAY);
    glDisableClientState(GL_VERTEX_ARRAY);
    glBindBuffer(GL_ARRAY_BUFFER, 0);
}

void PainterContext::Free()
{
    for (auto& [model, buffers] : m_meshes)
        buffers->Free();
    m_meshes.clear();
    const GLuint names[3] = {m_stampBuffer, m_floorBuffer, m_scratch};
    glDeleteBuffers(3, names);
}
