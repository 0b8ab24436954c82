#include "overlays/Countdown.h"

#include <QCoroFuture>
#include <QPromise>

#include <chrono>
#include <memory>
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

QCoro::Task<bool> CountdownController::run(Screen /*screen*/, int seconds)
{
    const auto model = std::make_unique<CountdownModel>(seconds);
    QPromise<bool> answer;
    answer.start();
    model->onDone = [&answer](bool goOn) {
        answer.addResult(goOn);
        answer.finish();
    };
    model->startTicking();
    const bool goOn = co_await answer.future();
    co_return goOn;
}

} // namespace zivra
