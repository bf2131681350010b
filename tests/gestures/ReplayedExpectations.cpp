// SPDX-License-Identifier: MIT
// What a recording may expect.
#include "Replayer.h"

#include "object/ZUndoStack.h"
#include "zmodel/ZSkin.h"

#include <cmath>
#include <sstream>

namespace {

// Per cent, and fractions.
constexpr double kSpreadTolerance = 1e-3;
constexpr double kWeightTolerance = 1e-5;
constexpr double kPlaceTolerance = 1e-3;

std::vector<std::string> Arguments(const RecordedLine& line) { return {line.begin() + 1, line.end()}; }

std::string Joined(const std::vector<std::string>& words)
{
    std::string joined;
    for (const std::string& word : words)
        joined += " \"" + word + "\"";
    return joined.empty() ? " nothing" : joined;
}

/// The number in "Vertex 12 Body".
std::string VertexOf(const std::string& row)
{
    std::istringstream in(row);
    std::string word, number;
    in >> word >> number;
    return word == "Vertex" ? number : row;
}

} // namespace

const std::map<std::string, Replayer::Word>& Replayer::Expectations()
{
    static const std::map<std::string, Word> words{
        {"rows", {1, &Replayer::ExpectRows}},     {"vertices", {0, &Replayer::ExpectVertices}},
        {"active", {0, &Replayer::ExpectActive}}, {"selection", {1, &Replayer::ExpectSelection}},
        {"spread", {0, &Replayer::ExpectSpread}}, {"weights", {3, &Replayer::ExpectWeights}},
        {"undo", {0, &Replayer::ExpectUndo}},     {"redo", {0, &Replayer::ExpectRedo}},
        {"eye", {3, &Replayer::ExpectEye}}};
    return words;
}

void Replayer::Compare(const std::vector<std::string>& expected, const std::vector<std::string>& seen) const
{
    if (expected != seen)
        Fail("expected" + Joined(expected) + ", found" + Joined(seen));
}

void Replayer::CompareNumbers(const std::vector<double>& expected, const std::vector<double>& seen,
                              double tolerance) const
{
    bool same = expected.size() == seen.size();
    for (size_t i = 0; same && i < expected.size(); ++i)
        same = std::abs(expected[i] - seen[i]) <= tolerance;
    if (!same)
        Fail("expected " + testing::PrintToString(expected) + ", found " + testing::PrintToString(seen));
}

/// rows CONTROL TEXT...: every row of a list.
void Replayer::ExpectRows(const RecordedLine& line)
{
    Compare({line.begin() + 2, line.end()}, OpenedTool::Rows(*Control<ZtListBox>(line[1])));
}

/// vertices NUMBER...: the vertex list, from top to bottom; nothing when it is empty.
void Replayer::ExpectVertices(const RecordedLine& line)
{
    std::vector<std::string> seen = OpenedTool::Rows(m_desk.Vertices());
    for (std::string& row : seen)
        row = VertexOf(row);
    if (seen == std::vector<std::string>{"Empty"})
        seen.clear();
    Compare(Arguments(line), seen);
}

/// active NUMBER...: the highlighted rows of the vertex list.
void Replayer::ExpectActive(const RecordedLine& line)
{
    std::vector<std::string> seen;
    for (const int row : m_desk.Vertices().GetSelectedRows())
        seen.push_back(VertexOf(m_desk.Vertices().GetRowText(row)));
    Compare(Arguments(line), seen);
}

/// selection CONTROL ROW...
void Replayer::ExpectSelection(const RecordedLine& line)
{
    std::vector<std::string> seen;
    for (const int row : Control<ZtListBox>(line[1])->GetSelectedRows())
        seen.push_back(std::to_string(row));
    Compare({line.begin() + 2, line.end()}, seen);
}

/// spread BONE PERCENT BONE PERCENT...: every row; slider and number show the same.
void Replayer::ExpectSpread(const RecordedLine& line)
{
    constexpr int kSlider = 1, kWeight = 3;
    const ZtSpread& spread = m_desk.Spread();
    std::vector<std::string> bones, seenBones;
    std::vector<double> weights, seenWeights, sliders;
    for (size_t i = 1; i + 1 < line.size(); i += 2) {
        bones.push_back(line[i]);
        weights.push_back(std::stod(line[i + 1]));
    }
    for (int row = 0; row < spread.GetRowCount(); ++row) {
        seenBones.push_back(spread.GetRowLabel(row));
        seenWeights.push_back(spread.GetCell(row, kWeight)->value);
        sliders.push_back(spread.GetCell(row, kSlider)->value);
    }
    Compare(bones, seenBones);
    CompareNumbers(weights, seenWeights, kSpreadTolerance);
    CompareNumbers(weights, sliders, kSpreadTolerance);
}

/// weights MODEL VERTEX WEIGHT...: fractions, one a link of the skin.
void Replayer::ExpectWeights(const RecordedLine& line)
{
    ZSkin& skin = *Model(line[1])->GetSkin();
    std::vector<double> expected, seen;
    for (size_t i = 3; i < line.size(); ++i)
        expected.push_back(std::stod(line[i]));
    for (int link = 0; link < skin.LinkCount(); ++link) {
        skin.BeginLink(link);
        const int entry = skin.FindEntry(std::stoi(line[2]));
        seen.push_back(entry >= 0 ? skin.EntryWeight(entry) : 0);
        skin.EndLink();
    }
    CompareNumbers(expected, seen, kWeightTolerance);
}

/// undo NAME...: all steps, the next one first.
void Replayer::ExpectUndo(const RecordedLine& line) { Compare(Arguments(line), ZUndoStack::TheOne()->GetUndoNames()); }
void Replayer::ExpectRedo(const RecordedLine& line) { Compare(Arguments(line), ZUndoStack::TheOne()->GetRedoNames()); }

/// eye X Y Z: where the camera stands.
void Replayer::ExpectEye(const RecordedLine& line)
{
    const ZgeVector3& eye = m_desk.Viewer().GetCamera().GetEye();
    CompareNumbers({std::stod(line[1]), std::stod(line[2]), std::stod(line[3])}, {eye.x, eye.y, eye.z},
                   kPlaceTolerance);
}
