// SPDX-License-Identifier: MIT
// The screen's width and the message boxes.
#include "ztoolkit/ZToolKit.h"

#include "zbaselib/ZReport.h"

namespace {
struct ToolKit
{
    int screenWidth = 1920;
    ZtMessageAnswerer answerer;
    std::vector<ZtMessage> messages;
};

ToolKit& TheToolKit()
{
    static ToolKit toolKit;
    return toolKit;
}

std::string TextOf(const char* text) { return text != nullptr ? text : ""; }
} // namespace

int ZToolKit_GetScreenWidth() { return TheToolKit().screenWidth; }

void ZToolKit_SetScreenWidth(int width)
{
    if (width < 1) {
        ZReport_Misuse("ZToolKit_SetScreenWidth", "a screen is at least 1 pixel wide, not " + std::to_string(width));
        return;
    }
    TheToolKit().screenWidth = width;
}

int ZtDisplayMessage(const char* title, const char* text, const char* button1, const char* button2, const char* button3,
                     int, int)
{
    ZtMessage message{TextOf(title), TextOf(text), {}, 0};
    for (const char* button : {button1, button2, button3})
        if (button != nullptr)
            message.buttons.emplace_back(button);
    if (message.buttons.empty())
        message.buttons.emplace_back("OK");
    const int last = static_cast<int>(message.buttons.size());
    // A copy: whoever answers may replace itself.
    const ZtMessageAnswerer answerer = TheToolKit().answerer;
    message.answer = answerer ? answerer(message) : last;
    if (message.answer < 1 || message.answer > last)
        message.answer = last;
    TheToolKit().messages.push_back(message);
    return message.answer;
}

void ZToolKit_SetMessageAnswerer(ZtMessageAnswerer answerer) { TheToolKit().answerer = std::move(answerer); }
const std::vector<ZtMessage>& ZToolKit_GetMessages() { return TheToolKit().messages; }
void ZToolKit_ClearMessages() { TheToolKit().messages.clear(); }
