// SPDX-License-Identifier: MIT
// The toolkit as a whole: the screen and message boxes.
#pragma once

#include <functional>
#include <string>
#include <vector>

/// Width of the screen in pixels: the real one's on the desk, 1920 without a window, and settable.
int ZToolKit_GetScreenWidth();
void ZToolKit_SetScreenWidth(int width);

/// A question that was shown, and how it was answered.
struct ZtMessage
{
    std::string title;
    std::string text;
    std::vector<std::string> buttons;
    int answer = 0; ///< the button's number, counted from 1
};

/// Shows a modal message box and answers the number of the pressed button, counted from 1. Null buttons are left out.
/// The last two arguments are the box's icon and its default button (0 = the host's choice). Without anybody to answer
/// it is the last button, the safe one; an answer that is no button counts as that too.
int ZtDisplayMessage(const char* title, const char* text, const char* button1, const char* button2, const char* button3,
                     int icon, int defaultButton);

/// Who answers: the desk's dialog, a script, a test. An empty function: nobody.
using ZtMessageAnswerer = std::function<int(const ZtMessage& question)>;
void ZToolKit_SetMessageAnswerer(ZtMessageAnswerer answerer);
/// Every message since the last clearing, in order.
const std::vector<ZtMessage>& ZToolKit_GetMessages();
void ZToolKit_ClearMessages();
