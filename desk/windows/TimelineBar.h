// SPDX-License-Identifier: MIT
// The timeline: which animation, at what time, playing or not.
#pragma once

#include <QElapsedTimer>
#include <QTimer>
#include <QWidget>

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QSlider;
class QToolButton;
class ZDeskSession;

/// Shows and sets the scene's time. Playing follows the clock, so that a slow picture drops frames rather than time.
class TimelineBar : public QWidget
{
    Q_OBJECT
public:
    TimelineBar(ZDeskSession& desk, QWidget* parent);
    void Sync();
    bool IsPlaying() const { return m_tick.isActive(); }
    void TogglePlay();

private:
    void Build();
    void FillAnimations();
    void SetTime(double seconds);
    void ShowPlaying();
    void Tick();
    double Duration() const;

    ZDeskSession& m_desk;
    QToolButton* m_toStart;
    QToolButton* m_play;
    QSlider* m_scrub;
    QDoubleSpinBox* m_time;
    QCheckBox* m_loop;
    QComboBox* m_animation;
    QTimer m_tick;
    QElapsedTimer m_clock;
    QStringList m_names; ///< as shown in the choice
};
