// SPDX-License-Identifier: MIT
// Plays recorded gestures: text files of what a hand did and what must hold after it. recordings/README.md has the
// words.
#pragma once

#include "documents/ZDocuments.h"
#include "support/OpenedTool.h"

#include <map>
#include <stdexcept>
#include <string>
#include <vector>

/// One line of a recording: its words, quotes taken off.
using RecordedLine = std::vector<std::string>;

/// Plays one recording on a session of its own. What does not hold, and a line that cannot be played, is a failure of
/// the test that runs, at that line of the recording.
class Replayer
{
public:
    Replayer(const std::string& pluginFolder, std::string file);
    ~Replayer();
    void Play();

private:
    using Act = void (Replayer::*)(const RecordedLine&);
    struct Word
    {
        size_t arguments; ///< at least so many
        Act act;
    };
    static const std::map<std::string, Word>& Words();
    static const std::map<std::string, Word>& Expectations();
    void PlayLine(const RecordedLine& line);
    void PlayWord(const std::map<std::string, Word>& words, const RecordedLine& line);
    void Fail(const std::string& what) const;
    void Compare(const std::vector<std::string>& expected, const std::vector<std::string>& seen) const;
    void CompareNumbers(const std::vector<double>& expected, const std::vector<double>& seen, double tolerance) const;

    // The hand. Words from line[1] on are the arguments.
    void Open(const RecordedLine& line);
    void Tool(const RecordedLine& line);
    void Drop(const RecordedLine& line);
    void Size(const RecordedLine& line);
    void Camera(const RecordedLine& line);
    void Frame(const RecordedLine& line);
    void Press(const RecordedLine& line);
    void Move(const RecordedLine& line);
    void Release(const RecordedLine& line);
    void Wheel(const RecordedLine& line);
    void Key(const RecordedLine& line);
    void Hold(const RecordedLine& line);
    void Let(const RecordedLine& line);
    void Select(const RecordedLine& line);
    void Check(const RecordedLine& line);
    void Choose(const RecordedLine& line);
    void Click(const RecordedLine& line);
    void Type(const RecordedLine& line);
    void Drag(const RecordedLine& line);
    void Undo(const RecordedLine& line);
    void Redo(const RecordedLine& line);

    // What must hold. Words from line[1] on are the values.
    void ExpectRows(const RecordedLine& line);
    void ExpectVertices(const RecordedLine& line);
    void ExpectActive(const RecordedLine& line);
    void ExpectSelection(const RecordedLine& line);
    void ExpectSpread(const RecordedLine& line);
    void ExpectWeights(const RecordedLine& line);
    void ExpectUndo(const RecordedLine& line);
    void ExpectRedo(const RecordedLine& line);
    void ExpectEye(const RecordedLine& line);

    ZModel* Model(const std::string& name) const;
    template <class T> T* Control(const std::string& name) const;

    OpenedTool m_desk;
    ZDocuments m_documents;
    std::string m_file;
    std::vector<ZModel*> m_models;
    int m_line = 0;
};

template <class T> T* Replayer::Control(const std::string& name) const
{
    T* const control = m_desk.Find<T>(name);
    if (control == nullptr)
        throw std::runtime_error("there is no control '" + name + "' of that kind");
    return control;
}
