// SPDX-License-Identifier: MIT
// Small COLLADA files.
#include "ColladaText.h"

#include <sstream>

namespace skindesk::test {

namespace {

std::string Source(const std::string& id, const std::string& kind, const std::string& values, std::size_t count,
                   std::size_t stride, const std::string& parameters)
{
    std::ostringstream text;
    text << "<source id='" << id << "'><" << kind << " id='" << id << "-array' count='" << count * stride << "'>"
         << values << "</" << kind << "><technique_common><accessor source='#" << id << "-array' count='" << count
         << "' stride='" << stride << "'>" << parameters << "</accessor></technique_common></source>";
    return text.str();
}

std::string Parameter(const std::string& name, const std::string& type)
{
    return "<param name='" + name + "' type='" + type + "'/>";
}

std::string Geometry(std::size_t rows)
{
    std::ostringstream places;
    std::ostringstream corners;
    for (std::size_t row = 0; row < rows; ++row) {
        places << "0 " << row << " 0 1 " << row << " 0 ";
        if (row + 1 < rows) {
            corners << 2 * row << ' ' << 2 * row + 1 << ' ' << 2 * row + 3 << ' ' << 2 * row + 2 << ' ';
        }
    }
    std::string sides;
    for (std::size_t quad = 1; quad < rows; ++quad) {
        sides += "4 ";
    }
    return "<library_geometries><geometry id='strip' name='StripMesh'><mesh>" +
           Source("places", "float_array", places.str(), 2 * rows, 3,
                  Parameter("X", "float") + Parameter("Y", "float") + Parameter("Z", "float")) +
           "<vertices id='strip-vertices'><input semantic='POSITION' source='#places'/></vertices><polylist count='" +
           std::to_string(rows - 1) + "'><input semantic='VERTEX' source='#strip-vertices' offset='0'/><vcount>" +
           sides + "</vcount><p>" + corners.str() + "</p></polylist></mesh></geometry></library_geometries>";
}

std::string Controller(const ColladaStrip& strip)
{
    std::ostringstream names;
    std::ostringstream matrices;
    for (int bone = 0; bone < strip.bones; ++bone) {
        names << "Bone" << bone << ' ';
        matrices << "1 0 0 0 0 1 0 " << -bone << " 0 0 1 0 0 0 0 1 ";
    }
    std::ostringstream values;
    std::ostringstream counts;
    std::ostringstream links;
    std::size_t count = 0;
    for (const auto& row : strip.weights) {
        counts << row.size() << ' ';
        for (const auto& [bone, weight] : row) {
            values << weight << ' ';
            links << bone << ' ' << count++ << ' ';
        }
    }
    const auto bones = static_cast<std::size_t>(strip.bones);
    return "<library_controllers><controller id='skin'><skin source='#strip'><bind_shape_matrix>" + strip.bindShape +
           "</bind_shape_matrix>" + Source("joints", "Name_array", names.str(), bones, 1, Parameter("JOINT", "name")) +
           Source("binds", "float_array", matrices.str(), bones, 16, Parameter("TRANSFORM", "float4x4")) +
           Source("weights", "float_array", values.str(), count, 1, Parameter("WEIGHT", "float")) +
           "<joints><input semantic='JOINT' source='#joints'/><input semantic='INV_BIND_MATRIX' "
           "source='#binds'/></joints>"
           "<vertex_weights count='" +
           std::to_string(strip.weights.size()) +
           "'><input semantic='JOINT' source='#joints' offset='0'/><input semantic='WEIGHT' source='#weights' "
           "offset='1'/><vcount>" +
           counts.str() + "</vcount><v>" + links.str() +
           "</v></vertex_weights></skin></controller></library_controllers>";
}

std::string Scene(const ColladaStrip& strip)
{
    std::string open;
    std::string close;
    for (int bone = 0; bone < strip.bones; ++bone) {
        const std::string name = "Bone" + std::to_string(bone);
        open += "<node id='" + name + "' sid='" + name + "' name='" + name + "' type='JOINT'>";
        open += bone > 0 ? "<translate sid='translate'>0 1 0</translate>" : strip.boneTransform;
        close += "</node>";
    }
    return "<library_visual_scenes><visual_scene id='Scene' name='Scene'>" + open + close +
           "<node id='strip-node' name='Strip'><instance_controller url='#skin'><skeleton>#Bone0</skeleton>"
           "</instance_controller></node>" +
           strip.nodes + "</visual_scene></library_visual_scenes><scene><instance_visual_scene url='#Scene'/></scene>";
}

} // namespace

std::string ColladaStrip::Text() const
{
    return "<?xml version='1.0' encoding='utf-8'?>\n"
           "<COLLADA xmlns='http://www.collada.org/2005/11/COLLADASchema' version='1.4.1'>\n"
           "<asset><unit name='unit' meter='" +
           unit + "'/><up_axis>" + upAxis + "</up_axis></asset>\n" + libraries + Geometry(weights.size() / 2) + "\n" +
           Controller(*this) + "\n" + Scene(*this) + "\n</COLLADA>\n";
}

std::string ColladaAnimation(const std::string& bone, const std::vector<double>& seconds,
                             const std::vector<double>& heights)
{
    std::ostringstream times;
    std::ostringstream values;
    std::ostringstream kinds;
    for (std::size_t k = 0; k < seconds.size(); ++k) {
        times << seconds[k] << ' ';
        values << "0 " << heights[k] << " 0 ";
        kinds << "LINEAR ";
    }
    return "<library_animations><animation id='rise' name='Rise'>" +
           Source("times", "float_array", times.str(), seconds.size(), 1, Parameter("TIME", "float")) +
           Source("heights", "float_array", values.str(), seconds.size(), 3,
                  Parameter("X", "float") + Parameter("Y", "float") + Parameter("Z", "float")) +
           Source("kinds", "Name_array", kinds.str(), seconds.size(), 1, Parameter("INTERPOLATION", "name")) +
           "<sampler id='sampler'><input semantic='INPUT' source='#times'/><input semantic='OUTPUT' source='#heights'/>"
           "<input semantic='INTERPOLATION' source='#kinds'/></sampler><channel source='#sampler' target='" +
           bone + "/translate'/></animation></library_animations>";
}

} // namespace skindesk::test
