// SPDX-License-Identifier: MIT
// The timeline's widgets and the clock that plays.
#include "desk/windows/TimelineBar.h"

#include "desk/model/ZDeskSession.h"
#include "desk/windows/Icons.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QHBoxLayout>
#include <QSignalBlocker>
#include <QSlider>
#include <QToolButton>

#include <cmath>

namespace {
constexpr int kFrameMilliseconds = 16;
constexpr double kStepsPerSecond = 1000;
} // namespace

TimelineBar::TimelineBar(ZDeskSession& desk, QWidget* parent)
    : QWidget(parent), m_desk(desk), m_toStart(new QToolButton(this)), m_play(new QToolButton(this)),
      m_scrub(new QSlider(Qt::Horizontal, this)), m_time(new QDoubleSpinBox(this)),
      m_loop(new QCheckBox(tr("Loop"), this)), m_animation(new QComboBox(this))
{
    Build();
    connect(m_toStart, &QToolButton::clicked, this, [this] { SetTime(0); });
    connect(m_play, &QToolButton::clicked, this, &TimelineBar::TogglePlay);
    connect(m_scrub, &QSlider::valueChanged, this, [this](int steps) { SetTime(steps / kStepsPerSecond); });
    connect(m_time, &QDoubleSpinBox::valueChanged, this, &TimelineBar::SetTime);
    connect(m_loop, &QCheckBox::toggled, this, [this](bool loop) {
        m_desk.Session().GetScene().SetLooping(loop);
        m_desk.AfterEvent();
    });
    connect(m_animation, &QComboBox::activated, this, [this](int index) {
        m_desk.Session().GetScene().SetAnimation(index - 1);
        SetTime(0);
    });
    connect(&m_tick, &QTimer::timeout, this, &TimelineBar::Tick);
    Sync();
}

void TimelineBar::Build()
{
    auto* const row = new QHBoxLayout(this);
    row->setContentsMargins(6, 2, 6, 2);
    const auto name = [](QWidget* widget, const char* id, const QString& text) {
        widget->setObjectName(QLatin1String(id));
        widget->setAccessibleName(text);
        widget->setToolTip(text);
    };
    m_toStart->setIcon(MakeIcon(DeskIcon::ToStart));
    ShowPlaying();
    m_time->setSuffix(tr(" s"));
    m_time->setDecimals(3);
    m_time->setSingleStep(1.0 / 24);
    m_time->setKeyboardTracking(false);
    m_loop->setChecked(true);
    m_animation->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    name(m_toStart, "TimelineToStart", tr("To the start"));
    name(m_play, "TimelinePlay", tr("Play or pause"));
    name(m_scrub, "TimelineScrub", tr("Time"));
    name(m_time, "TimelineTime", tr("Time in seconds"));
    name(m_loop, "TimelineLoop", tr("Begin again at the end"));
    name(m_animation, "TimelineAnimation", tr("Animation"));
    row->addWidget(m_animation);
    row->addWidget(m_toStart);
    row->addWidget(m_play);
    row->addWidget(m_scrub, 1);
    row->addWidget(m_time);
    row->addWidget(m_loop);
}

double TimelineBar::Duration() const
{
    const ZScene& scene = m_desk.Session().GetScene();
    const int chosen = scene.GetAnimation();
    return chosen < 0 ? 0.0 : scene.GetAnimations()[static_cast<size_t>(chosen)]->GetDuration();
}

void TimelineBar::FillAnimations()
{
    QStringList names{tr("Rest pose")};
    const auto& animations = m_desk.Session().GetScene().GetAnimations();
    for (size_t i = 0; i < animations.size(); ++i)
        names +=
            animations[i]->name.empty() ? tr("Animation %1").arg(i + 1) : QString::fromStdString(animations[i]->name);
    if (names == m_names)
        return;
    m_names = names;
    m_animation->clear();
    m_animation->addItems(names);
}

void TimelineBar::Sync()
{
    const QSignalBlocker quiet[] = {QSignalBlocker(m_animation), QSignalBlocker(m_scrub), QSignalBlocker(m_time),
                                    QSignalBlocker(m_loop)};
    const ZScene& scene = m_desk.Session().GetScene();
    FillAnimations();
    m_animation->setCurrentIndex(scene.GetAnimation() + 1);
    m_animation->setEnabled(m_names.size() > 1);
    const bool moves = Duration() > 0;
    if (!moves && IsPlaying())
        TogglePlay();
    for (QWidget* const widget :
         {static_cast<QWidget*>(m_toStart), static_cast<QWidget*>(m_play), static_cast<QWidget*>(m_scrub),
          static_cast<QWidget*>(m_time), static_cast<QWidget*>(m_loop)})
        widget->setEnabled(moves);
    const double seconds = moves ? scene.GetAnimationTime() : 0;
    m_scrub->setRange(0, static_cast<int>(std::lround(Duration() * kStepsPerSecond)));
    if (!m_scrub->isSliderDown())
        m_scrub->setValue(static_cast<int>(std::lround(seconds * kStepsPerSecond)));
    m_time->setRange(0, Duration());
    if (!m_time->hasFocus() || IsPlaying())
        m_time->setValue(seconds);
    m_loop->setChecked(scene.IsLooping());
}

void TimelineBar::SetTime(double seconds)
{
    m_desk.Session().GetScene().SetTime(seconds);
    m_desk.AfterEvent();
}

void TimelineBar::TogglePlay()
{
    if (IsPlaying()) {
        m_tick.stop();
    } else if (Duration() > 0) {
        ZScene& scene = m_desk.Session().GetScene();
        if (!scene.IsLooping() && scene.GetAnimationTime() >= Duration())
            scene.SetTime(0);
        m_clock.restart();
        m_tick.start(kFrameMilliseconds);
    }
    ShowPlaying();
}

void TimelineBar::ShowPlaying() { m_play->setIcon(MakeIcon(IsPlaying() ? DeskIcon::Pause : DeskIcon::Play)); }

void TimelineBar::Tick()
{
    ZScene& scene = m_desk.Session().GetScene();
    const double next = scene.GetAnimationTime() + static_cast<double>(m_clock.restart()) / 1000;
    SetTime(next);
    if (!scene.IsLooping() && next >= Duration() && IsPlaying())
        TogglePlay();
}
