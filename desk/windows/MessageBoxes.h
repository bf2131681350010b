// SPDX-License-Identifier: MIT
// The host's message boxes as dialogs.
#pragma once

class QWidget;

/// While it lives, message boxes of the host and its tools are modal dialogs over `window`, with their own titles,
/// texts and buttons. Escape answers the last button, the safe one.
class MessageBoxes
{
public:
    explicit MessageBoxes(QWidget* window);
    ~MessageBoxes();
    MessageBoxes(const MessageBoxes&) = delete;
    MessageBoxes& operator=(const MessageBoxes&) = delete;
};
