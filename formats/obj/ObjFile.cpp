// SPDX-License-Identifier: MIT
// The statements of an OBJ file, one after the other.
#include "ObjFile.h"

#include "ObjLines.h"
#include "ObjMeshes.h"
#include "ObjSurface.h"

#include "gltf/FileBytes.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <optional>
#include <set>

namespace skindesk::obj {

namespace {

using Words = std::span<const std::string_view>;

// How a desk without trimming, curves and rendering shows a file; neither the shape nor the names change.
constexpr std::array SILENTLY_LEFT_OUT{"s",         "mg",   "bevel", "c_interp", "d_interp",
                                       "lod",       "vp",   "ctech", "stech",    "shadow_obj",
                                       "trace_obj", "step", "bmat",  "maplib",   "usemap"};

// What is lost, in words that complete "... left out".
const std::map<std::string_view, const char*>& LossesByKeyword()
{
    static const std::map<std::string_view, const char*> LOSSES{
        {"trim", "trimming loops (trim): the surface is shown whole"},
        {"hole", "holes in surfaces (hole): the surface is shown whole"},
        {"scrv", "special curves on surfaces (scrv)"},
        {"sp", "special points on surfaces (sp)"},
        {"con", "connections between surfaces (con)"},
        {"curv", "curves (curv)"},
        {"curv2", "curves on surfaces (curv2)"},
        {"p", "points (p)"},
        {"l", "lines (l)"},
        {"mtllib", "colours and pictures of the material library (mtllib); materials keep their names"},
        {"call", "other files that it calls in (call)"},
        {"csh", "commands that it wants to be run (csh)"},
        {"bsp", "patches in the old form (bsp)"},
        {"bzp", "patches in the old form (bzp)"},
        {"cdc", "curves in the old form (cdc)"},
        {"cdp", "patches in the old form (cdp)"},
    };
    return LOSSES;
}

std::string Joined(Words words)
{
    std::string text;
    for (const std::string_view word : words) {
        text += (text.empty() ? "" : " ") + std::string(word);
    }
    return text;
}

class ObjReader
{
public:
    ObjReader(std::string_view text, const std::string& path) : m_lines(text), m_path(path) {}

    imports::NewCharacter Read()
    {
        m_new.generator = "Skindesk, from an OBJ file";
        while (m_lines.Next()) {
            ReadStatement();
        }
        if (m_surface) {
            PlaceOf(*m_surface).Refuse("the surface has no end");
        }
        AddMeshes();
        if (m_new.meshes.empty()) {
            throw gltf::FileError(m_path, "", "holds neither a free-form surface nor a polygon mesh");
        }
        AddWarnings();
        return std::move(m_new);
    }

private:
    // Inside a curve there is nothing that is read.
    void ReadStatement()
    {
        const std::string_view keyword = m_lines.Keyword();
        const Words words = m_lines.Arguments();
        if (m_inCurve) {
            m_inCurve = keyword != "end";
        } else if (m_surface) {
            ReadBody(keyword, words);
        } else if (!ReadVertexData(keyword, words) && !ReadNames(keyword, words) && !ReadElement(keyword, words)) {
            LeaveOut(keyword);
        }
    }

    [[nodiscard]] ObjPlace Here() const { return {m_path, m_lines.Number()}; }
    [[nodiscard]] ObjPlace PlaceOf(const ObjSurface& surface) const { return {m_path, surface.line}; }

    void RequireWords(Words words, std::size_t least) const
    {
        if (words.size() < least) {
            Here().Refuse(std::string(m_lines.Keyword()) + " is followed by " + std::to_string(words.size()) +
                          (words.size() == 1 ? " word, " : " words, ") + std::to_string(least) + " are needed");
        }
    }

    bool ReadVertexData(std::string_view keyword, Words words)
    {
        const auto number = [&](std::size_t i) { return static_cast<float>(Here().Number(words[i])); };
        if (keyword == "v") {
            RequireWords(words, 3);
            m_vertices.positions.push_back({number(0), number(1), number(2)});
            // Some programs write a colour behind the place: then there are six numbers, and no weight.
            m_vertices.weights.push_back(words.size() == 4 ? number(3) : 1);
        } else if (keyword == "vt") {
            RequireWords(words, 1);
            m_vertices.texCoords.push_back({number(0), words.size() > 1 ? number(1) : 0});
        } else if (keyword == "vn") {
            RequireWords(words, 3);
            m_vertices.normals.push_back({number(0), number(1), number(2)});
        } else {
            return false;
        }
        return true;
    }

    bool ReadNames(std::string_view keyword, Words words)
    {
        if (keyword == "o") {
            m_object = Joined(words);
        } else if (keyword == "g") {
            // "default" is what files call faces without a group.
            m_group = words.size() == 1 && words[0] == "default" ? "" : Joined(words);
        } else if (keyword == "usemtl") {
            m_material = MaterialOf(Joined(words));
        } else {
            return false;
        }
        return true;
    }

    int MaterialOf(const std::string& name)
    {
        const auto [found, isNew] = m_materials.try_emplace(name, static_cast<int>(m_new.materials.size()));
        if (isNew) {
            m_new.materials.push_back({name, {0.8, 0.8, 0.8, 1}, true});
        }
        return found->second;
    }

    bool ReadElement(std::string_view keyword, Words words)
    {
        if (keyword == "f" || keyword == "fo") {
            ReadFace(words);
        } else if (keyword == "cstype") {
            ReadCurveType(words);
        } else if (keyword == "deg") {
            RequireWords(words, 1);
            m_degree = {ReadDegree(words[0]), words.size() > 1 ? ReadDegree(words[1]) : 0};
        } else if (keyword == "surf") {
            BeginSurface(words);
        } else if (keyword == "curv" || keyword == "curv2") {
            m_inCurve = true;
            LeaveOut(keyword);
        } else if (keyword == "parm" || keyword == "end") {
            Here().Refuse(std::string(keyword) + " stands outside of a surface");
        } else {
            return false;
        }
        return true;
    }

    [[nodiscard]] int ReadDegree(std::string_view word) const
    {
        const long long degree = Here().WholeNumber(word);
        if (degree < 1 || degree > 5) {
            Here().Refuse("degree " + std::to_string(degree) + " is not read, 1 to 5 are");
        }
        return static_cast<int>(degree);
    }

    void ReadCurveType(Words words)
    {
        m_isRational = !words.empty() && words[0] == "rat";
        const Words behind = m_isRational ? words.subspan(1) : words;
        if (behind.size() != 1) {
            Here().Refuse("cstype names no type of surface");
        }
        static const std::set<std::string_view> OTHERS{"bmatrix", "cardinal", "taylor"};
        m_typeName = std::string(behind[0]);
        if (behind[0] == "bspline") {
            m_type = ObjCurveType::BSpline;
        } else if (behind[0] == "bezier") {
            m_type = ObjCurveType::Bezier;
        } else if (OTHERS.contains(behind[0])) {
            m_type = ObjCurveType::Other;
        } else {
            Here().Refuse("cstype " + Shown(behind[0]) + " is no type of surface");
        }
    }

    [[nodiscard]] std::string NameNow() const
    {
        if (m_object.empty() || m_group.empty() || m_object == m_group) {
            return m_group.empty() ? m_object : m_group;
        }
        return m_object + " " + m_group;
    }

    void ReadFace(Words words)
    {
        RequireWords(words, 3);
        std::vector<ObjCorner> corners;
        for (const std::string_view word : words) {
            corners.push_back(m_vertices.Corner(word, Here()));
        }
        const std::string name = NameNow();
        const auto [found, isNew] = m_meshByName.try_emplace(name, m_meshes.size());
        if (isNew) {
            m_meshes.emplace_back(m_vertices, name);
            m_order.emplace_back(found->second, std::nullopt);
        }
        m_meshes[found->second].AddFace(corners, m_material);
    }

    void BeginSurface(Words words)
    {
        if (m_type == ObjCurveType::None) {
            Here().Refuse("no cstype says before the surface what kind it is of");
        }
        if (m_type == ObjCurveType::Other) {
            Here().Refuse("a surface of cstype " + m_typeName + " is not read, bspline and bezier are");
        }
        if (m_degree[1] == 0) {
            Here().Refuse("no deg says before the surface which degree it has in u and in v");
        }
        RequireWords(words, 5);
        m_surface.emplace();
        m_surface->line = m_lines.Number();
        m_surface->type = m_type;
        m_surface->isRational = m_isRational;
        m_surface->degree = m_degree;
        for (std::size_t i = 0; i < 4; ++i) {
            m_surface->range[i] = Here().Number(words[i]);
        }
        for (const std::string_view word : words.subspan(4)) {
            m_surface->points.push_back(m_vertices.Corner(word, Here()));
        }
        m_surface->name = NameNow();
        m_surface->material = m_material;
    }

    void ReadBody(std::string_view keyword, Words words)
    {
        if (keyword == "parm") {
            RequireWords(words, 2);
            if (words[0] != "u" && words[0] != "v") {
                Here().Refuse("parm " + Shown(words[0]) + " is neither u nor v");
            }
            std::vector<double>& parameters = m_surface->parameters[words[0] == "u" ? 0 : 1];
            for (const std::string_view word : words.subspan(1)) {
                parameters.push_back(Here().Number(word));
            }
        } else if (keyword == "end") {
            EndSurface();
        } else if (keyword == "trim" || keyword == "hole" || keyword == "scrv" || keyword == "sp") {
            LeaveOut(keyword);
        } else {
            PlaceOf(*m_surface)
                .Refuse("the surface has no end before " + Shown(keyword) + " in line " +
                        std::to_string(m_lines.Number()));
        }
    }

    void EndSurface()
    {
        bool isPart = false;
        imports::NewMesh mesh = ToNurbs(*m_surface, m_vertices, PlaceOf(*m_surface), &isPart);
        m_parts += isPart ? 1 : 0;
        m_order.emplace_back(0, std::move(mesh));
        m_surface.reset();
    }

    void LeaveOut(std::string_view keyword)
    {
        if (std::find(SILENTLY_LEFT_OUT.begin(), SILENTLY_LEFT_OUT.end(), keyword) != SILENTLY_LEFT_OUT.end()) {
            return;
        }
        const auto loss = LossesByKeyword().find(keyword);
        const bool isKnown = loss != LossesByKeyword().end();
        auto& [line, count] = m_leftOut[isKnown ? loss->second : UNKNOWN];
        line = count == 0 ? m_lines.Number() : line;
        ++count;
    }

    // In the order of the file, each under a node of its name.
    void AddMeshes()
    {
        int surfaces = 0;
        for (auto& [mesh, surface] : m_order) {
            m_new.meshes.push_back(surface ? std::move(*surface) : m_meshes[mesh].Take());
            std::string& name = m_new.meshes.back().name;
            surfaces += surface ? 1 : 0;
            if (name.empty()) {
                name = surface ? "Surface " + std::to_string(surfaces) : std::filesystem::path(m_path).stem().string();
            }
            m_new.nodes.emplace_back();
            m_new.nodes.back().name = name;
            m_new.nodes.back().mesh = static_cast<int>(m_new.meshes.size()) - 1;
        }
    }

    void AddWarnings()
    {
        for (const auto& [what, where] : m_leftOut) {
            m_new.warnings.push_back("line " + std::to_string(where.first) + ": left out: " + what +
                                     (where.second > 1 ? ", " + std::to_string(where.second) + " times in all" : ""));
        }
        if (m_parts > 0) {
            m_new.warnings.push_back(std::to_string(m_parts) + (m_parts == 1 ? " surface shows" : " surfaces show") +
                                     " only a part of the domain in the file; here the whole is shown");
        }
    }

    static constexpr const char* UNKNOWN = "statements that are not known";

    ObjLines m_lines;
    const std::string& m_path;
    imports::NewCharacter m_new;
    ObjVertices m_vertices;

    std::string m_object;
    std::string m_group;
    int m_material = -1;
    std::map<std::string, int> m_materials;

    ObjCurveType m_type = ObjCurveType::None;
    std::string m_typeName;
    bool m_isRational = false;
    std::array<int, 2> m_degree{0, 0};
    std::optional<ObjSurface> m_surface;
    bool m_inCurve = false;

    std::vector<ObjMesh> m_meshes;
    std::map<std::string, std::size_t> m_meshByName;
    std::vector<std::pair<std::size_t, std::optional<imports::NewMesh>>> m_order; // polygon mesh or surface
    std::map<std::string, std::pair<std::size_t, std::size_t>> m_leftOut;         // first line, how often
    int m_parts = 0;
};

} // namespace

imports::NewCharacter ReadObj(std::string_view text, const std::string& path) { return ObjReader(text, path).Read(); }

imports::NewCharacter ReadObj(const std::string& path)
{
    const gltf::ByteBlock bytes = gltf::ReadWholeFile(path, path);
    return ReadObj({reinterpret_cast<const char*>(bytes.Span().data()), bytes.Size()}, path);
}

} // namespace skindesk::obj
