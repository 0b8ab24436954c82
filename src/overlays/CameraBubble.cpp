#include "overlays/CameraBubble.h"

#include "overlays/CameraPicture.h"
#include "overlays/PanelLevels.h"
#include "overlays/Placement.h"

#include <QEasingCurve>

namespace zivra {

CameraBubble::CameraBubble(const PanelMaker &maker) : m_maker(maker)
{
    m_model.onSize = [this](BubbleSize size) {
        if (onSize) {
            onSize(size);
        }
    };
    m_model.onClose = [this] {
        if (onClose) {
            onClose();
        }
    };
    constexpr int kMilliseconds = 200;
    m_growth.setDuration(kMilliseconds);
    m_growth.setEasingCurve(QEasingCurve::InOutQuad);
    QObject::connect(&m_growth, &QVariantAnimation::valueChanged, &m_model, [this](const QVariant &size) {
        // Whole sizes, or the corner would drift by what a panel's frame is rounded by at each step.
        m_panel->setFrame(resizedFromLowerLeft(m_panel->frame(), size.toSizeF().toSize()));
    });
}

void CameraBubble::makePanel()
{
    qmlRegisterType<CameraPicture>("Zivra.Camera", 1, 0, "CameraPicture");
    m_panel.emplace(m_maker,
                    PanelStyle{.title = QStringLiteral("Camera"),
                               .level = kCameraBubbleLevel,
                               .isMovableByBackground = true},
                    QStringLiteral("Overlays/BubbleView.qml"),
                    QVariantMap{{QStringLiteral("model"), QVariant::fromValue(&m_model)}});
}

void CameraBubble::show(CameraManager &camera, const Screen &screen, bool cameraOnly, BubbleSize size,
                        bool mirrored)
{
    if (!m_panel) {
        makePanel();
    }
    m_growth.stop();
    const bool showsBubble = m_panel->isVisible() && !m_model.cameraOnly();
    m_model.set(size, mirrored, cameraOnly);
    m_panel->setFrame(m_model.frameOn(
        screen.visibleFrame, showsBubble ? std::optional(m_panel->frame()) : std::nullopt, m_lastFrame));
    watch(&camera.preview());
    m_panel->orderFront();
}

void CameraBubble::hide()
{
    if (!m_panel || !m_panel->isVisible()) {
        return;
    }
    m_growth.stop();
    if (!m_model.cameraOnly()) {
        m_lastFrame = m_panel->frame();
    }
    watch(nullptr);
    m_panel->orderOut();
}

void CameraBubble::resize(BubbleSize size)
{
    if (!m_panel || m_model.cameraOnly()) {
        return;
    }
    m_model.setSize(size);
    m_growth.stop();
    m_growth.setStartValue(m_panel->frame().size());
    m_growth.setEndValue(BubbleModel::frameSize(false, size));
    m_growth.start();
}

std::optional<std::uint32_t> CameraBubble::panelWindowID() const
{
    return m_panel ? std::optional(m_panel->windowID()) : std::nullopt;
}

void CameraBubble::watch(PicturePreview *preview)
{
    m_panel->view().findChild<CameraPicture *>()->setPreview(preview);
}

} // namespace zivra
