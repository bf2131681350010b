// SPDX-License-Identifier: MIT
// Reading a recording, and the hand that plays it.
#include "Replayer.h"

#include "object/ZAction.h"
#include "object/ZUndoStack.h"

#include <filesystem>
#include <fstream>
#include <iomanip>
#include <sstream>

namespace {

/// Words are separated by blanks; a word with blanks, or none, stands in double quotes. A line that begins with # is a
/// remark.
RecordedLine WordsOf(const std::string& text)
{
    RecordedLine words;
    std::istringstream in(text);
    std::string word;
    while (in >> std::quoted(word))
        words.push_back(word);
    return !words.empty() && words[0][0] == '#' ? RecordedLine() : words;
}

int ModifiersOf(const RecordedLine& line, size_t from)
{
    const std::map<std::string, int> masks{
        {"shift", kModifierShift}, {"ctrl", kModifierControl}, {"alt", kModifierAlt}};
    int mask = 0;
    for (size_t i = from; i < line.size(); ++i)
        mask |= masks.at(line[i]);
    return mask;
}

int KeyOf(const std::string& name)
{
    if (name == "escape")
        return 27;
    return name.size() == 1 ? static_cast<int>(name[0]) : std::stoi(name);
}

std::vector<double> NumbersOf(const RecordedLine& line, size_t from)
{
    std::vector<double> numbers;
    for (size_t i = from; i < line.size(); ++i)
        numbers.push_back(std::stod(line[i]));
    return numbers;
}

std::vector<int> IndicesOf(const RecordedLine& line, size_t from)
{
    std::vector<int> indices;
    for (size_t i = from; i < line.size(); ++i)
        indices.push_back(std::stoi(line[i]));
    return indices;
}

} // namespace

Replayer::Replayer(const std::string& pluginFolder, std::string file)
    : m_desk(pluginFolder), m_documents(m_desk.session), m_file(std::move(file))
{
}

Replayer::~Replayer() { Object_ClearKeyStates(); }

const std::map<std::string, Replayer::Word>& Replayer::Words()
{
    static const std::map<std::string, Word> words{
        {"open", {1, &Replayer::Open}},     {"tool", {0, &Replayer::Tool}},     {"drop", {1, &Replayer::Drop}},
        {"size", {2, &Replayer::Size}},     {"camera", {6, &Replayer::Camera}}, {"frame", {0, &Replayer::Frame}},
        {"press", {3, &Replayer::Press}},   {"move", {2, &Replayer::Move}},     {"release", {2, &Replayer::Release}},
        {"wheel", {3, &Replayer::Wheel}},   {"key", {1, &Replayer::Key}},       {"hold", {1, &Replayer::Hold}},
        {"let", {1, &Replayer::Let}},       {"select", {1, &Replayer::Select}}, {"check", {3, &Replayer::Check}},
        {"choose", {2, &Replayer::Choose}}, {"click", {1, &Replayer::Click}},   {"type", {3, &Replayer::Type}},
        {"drag", {3, &Replayer::Drag}},     {"undo", {0, &Replayer::Undo}},     {"redo", {0, &Replayer::Redo}}};
    return words;
}

void Replayer::Play()
{
    std::ifstream in(m_file);
    if (!in)
        Fail("the recording cannot be read");
    int expectations = 0;
    for (std::string text; std::getline(in, text);) {
        ++m_line;
        const RecordedLine line = WordsOf(text);
        if (line.empty())
            continue;
        expectations += line[0] == "expect" ? 1 : 0;
        PlayLine(line);
        m_desk.session.AfterEvent();
        if (testing::Test::HasFatalFailure())
            return;
    }
    if (expectations == 0)
        Fail("the recording expects nothing");
}

void Replayer::PlayLine(const RecordedLine& line)
{
    try {
        if (line[0] == "expect")
            PlayWord(Expectations(), RecordedLine(line.begin() + 1, line.end()));
        else
            PlayWord(Words(), line);
    } catch (const std::exception& error) {
        Fail(std::string("this line cannot be played: ") + error.what());
    }
}

void Replayer::PlayWord(const std::map<std::string, Word>& words, const RecordedLine& line)
{
    const auto word = line.empty() ? words.end() : words.find(line[0]);
    if (word == words.end())
        Fail("there is no such word");
    else if (line.size() <= word->second.arguments)
        Fail("'" + line[0] + "' needs at least " + std::to_string(word->second.arguments) + " words after it");
    else
        (this->*word->second.act)(line);
}

void Replayer::Fail(const std::string& what) const { ADD_FAILURE_AT(m_file.c_str(), m_line) << what; }

ZModel* Replayer::Model(const std::string& name) const
{
    for (ZModel* const model : m_models)
        if (model->GetObjectName() == name)
            return model;
    throw std::runtime_error("there is no model '" + name + "'");
}

void Replayer::Open(const RecordedLine& line)
{
    m_models = m_documents.Open((std::filesystem::path(m_file).parent_path() / line[1]).string());
}

void Replayer::Tool(const RecordedLine&) { m_desk.OpenTool(); }

void Replayer::Drop(const RecordedLine& line)
{
    std::vector<ZModel*> models;
    for (size_t i = 1; i < line.size(); ++i)
        models.push_back(Model(line[i]));
    m_desk.Drop(models);
}

void Replayer::Size(const RecordedLine& line) { m_desk.Viewer().SetSize(std::stoi(line[1]), std::stoi(line[2])); }

void Replayer::Camera(const RecordedLine& line)
{
    const std::vector<double> n = NumbersOf(line, 1);
    if (!m_desk.Viewer().GetCamera().LookAt({n[0], n[1], n[2]}, {n[3], n[4], n[5]}, {0, 1, 0}))
        Fail("there is no such view");
}

void Replayer::Frame(const RecordedLine& line)
{
    std::vector<ZModel*> models;
    for (size_t i = 1; i < line.size(); ++i)
        models.push_back(Model(line[i]));
    m_desk.Viewer().Frame(models);
}

void Replayer::Press(const RecordedLine& line)
{
    const std::map<std::string, int> buttons{{"left", kButtonLeft}, {"middle", kButtonMiddle}, {"right", kButtonRight}};
    m_desk.Viewer().Press(std::stoi(line[1]), std::stoi(line[2]), buttons.at(line[3]), ModifiersOf(line, 4));
}

void Replayer::Move(const RecordedLine& line) { m_desk.Viewer().Move(std::stoi(line[1]), std::stoi(line[2])); }
void Replayer::Release(const RecordedLine& line) { m_desk.Viewer().Release(std::stoi(line[1]), std::stoi(line[2])); }

void Replayer::Wheel(const RecordedLine& line)
{
    m_desk.Viewer().Wheel(std::stoi(line[1]), std::stoi(line[2]), std::stod(line[3]));
}

void Replayer::Key(const RecordedLine& line) { m_desk.session.PressKey(KeyOf(line[1]), ModifiersOf(line, 2)); }
void Replayer::Hold(const RecordedLine& line) { Object_SetKeyState(KeyOf(line[1]), true); }
void Replayer::Let(const RecordedLine& line) { Object_SetKeyState(KeyOf(line[1]), false); }
void Replayer::Select(const RecordedLine& line) { Control<ZtListBox>(line[1])->UserSelect(IndicesOf(line, 2)); }

void Replayer::Check(const RecordedLine& line)
{
    Control<ZtListBox>(line[1])->UserSetCheck(std::stoi(line[2]), line[3] == "on");
}

void Replayer::Choose(const RecordedLine& line) { Control<ZtComboBox>(line[1])->UserChoose(std::stoi(line[2])); }
void Replayer::Click(const RecordedLine& line) { Control<ZtCheckBox>(line[1])->UserClick(); }

void Replayer::Type(const RecordedLine& line)
{
    if (!m_desk.Spread().UserType(std::stoi(line[1]), std::stoi(line[2]), std::stod(line[3])))
        Fail("there is no such cell");
}

/// The first value is the press's, the last one the release's.
void Replayer::Drag(const RecordedLine& line)
{
    const int row = std::stoi(line[1]), column = std::stoi(line[2]);
    const std::vector<double> values = NumbersOf(line, 3);
    if (!m_desk.Spread().UserSlide(row, column, kViewPress, values.front())) {
        Fail("there is no such slider");
        return;
    }
    for (size_t i = 1; i + 1 < values.size(); ++i)
        m_desk.Spread().UserSlide(row, column, kViewValueChanged, values[i]);
    m_desk.Spread().UserSlide(row, column, kViewRelease, values.back());
}

void Replayer::Undo(const RecordedLine&) { m_desk.session.Undo(); }
void Replayer::Redo(const RecordedLine&) { m_desk.session.Redo(); }
