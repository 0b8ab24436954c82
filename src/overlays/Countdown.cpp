#include "overlays/Countdown.h"

#include <chrono>
#include <utility>

namespace zivra {

CountdownModel::CountdownModel(int seconds, QObject *parent) : QObject(parent), m_value(seconds)
{
    m_timer.setInterval(std::chrono::seconds(1));
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &CountdownModel::tick);
}

void CountdownModel::startTicking()
{
    m_timer.start();
}

void CountdownModel::tick()
{
    if (m_value >= 2) {
        --m_value;
        Q_EMIT valueChanged();
        return;
    }
    complete(true);
}

void CountdownModel::complete(bool goOn)
{
    m_timer.stop();
    if (const auto done = std::exchange(onDone, nullptr)) {
        done(goOn);
    }
}

} // namespace zivra
