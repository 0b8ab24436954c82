#pragma once

#include "platform/Screens.h"

#include <QCoroTask>
#include <QObject>
#include <QTimer>

#include <functional>

namespace zivra {

/// The number that counts down before a take: from the given seconds to 1, one a second. 0 is never
/// shown. Main thread only.
class CountdownModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(int value READ value NOTIFY valueChanged)

public:
    explicit CountdownModel(int seconds, QObject *parent = nullptr);

    [[nodiscard]] int value() const { return m_value; }
    void startTicking();
    /// One second has passed.
    void tick();
    /// Ends the run: true goes on to record, false gives up. Only the first call has an effect.
    Q_INVOKABLE void complete(bool goOn);

    /// Taken and cleared before it is called, so that it is called once at most.
    std::function<void(bool goOn)> onDone;

Q_SIGNALS:
    void valueChanged();

private:
    int m_value;
    QTimer m_timer;
};

/// Counts down before a take, one at a time. Main thread only.
class CountdownController {
public:
    virtual ~CountdownController() = default;

    /// True when the countdown ran out or was skipped, false when the user called it off.
    [[nodiscard]] virtual QCoro::Task<bool> run(Screen screen, int seconds) = 0;
};

} // namespace zivra
