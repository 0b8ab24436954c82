#include "overlays/CountdownPanel.h"

#include "overlays/PanelLevels.h"
#include "overlays/Placement.h"

#include <QCoroFuture>
#include <QPromise>

#include <memory>

namespace zivra {

QCoro::Task<bool> CountdownPanel::run(Screen screen, int seconds)
{
    constexpr QSizeF kSize(260, 290);
    const auto model = std::make_unique<CountdownModel>(seconds);
    const auto panel = std::make_unique<OverlayPanel>(
        m_maker, PanelStyle{.title = QStringLiteral("Countdown"), .level = kStatusBarLevel},
        QStringLiteral("Overlays/CountdownView.qml"),
        QVariantMap{{QStringLiteral("model"), QVariant::fromValue(model.get())}});
    QPromise<bool> answer;
    answer.start();
    model->onDone = [&answer, &panel](bool goOn) {
        panel->orderOut();
        answer.addResult(goOn);
        answer.finish();
    };
    panel->setFrame(centredIn(screen.frame, kSize));
    panel->orderFront();
    model->startTicking();
    // The panel is still inside its button's event when the answer comes; the future resumes a turn later.
    const bool goOn = co_await answer.future();
    co_return goOn;
}

} // namespace zivra
