#include "overlays/AreaSelectorPanel.h"

#include "overlays/AreaSelectionModel.h"
#include "overlays/PanelLevels.h"

#include <QCoroFuture>
#include <QPromise>

#include <memory>

namespace zivra {

QCoro::Task<std::optional<QRectF>> AreaSelectorPanel::select(Screen screen)
{
    const auto model = std::make_unique<AreaSelectionModel>();
    const auto panel = std::make_unique<OverlayPanel>(
        m_maker,
        PanelStyle{.title = QStringLiteral("Area Selector"),
                   .level = kScreenSaverLevel,
                   .takesKeyboard = true,
                   .opaque = PanelStyle::Opaque::FrozenScreen},
        QStringLiteral("Overlays/AreaSelectionView.qml"),
        QVariantMap{{QStringLiteral("model"), QVariant::fromValue(model.get())}});
    QPromise<std::optional<QRectF>> answer;
    answer.start();
    model->onDone = [&answer, &panel](const std::optional<QRectF> &area) {
        panel->orderOut();
        answer.addResult(area);
        answer.finish();
    };
    panel->setFrame(screen.frame);
    panel->orderFront();
    // The panel is still inside the event that ends it; the future resumes a turn later.
    const std::optional<QRectF> area = co_await answer.future();
    co_return area;
}

} // namespace zivra
