#pragma once

#include "overlays/BubbleModel.h"
#include "overlays/CameraBubbleController.h"
#include "overlays/OverlayPanel.h"

#include <QVariantAnimation>

#include <optional>

namespace zivra {

/// The bubble as a panel. Made at the first show and kept; the camera's pictures are watched only while it
/// is on the screen.
class CameraBubble final : public CameraBubbleController {
public:
    explicit CameraBubble(const PanelMaker &maker);

    void show(CameraManager &camera, const Screen &screen, bool cameraOnly, BubbleSize size,
              bool mirrored) override;
    void hide() override;
    void resize(BubbleSize size) override;
    [[nodiscard]] std::optional<std::uint32_t> panelWindowID() const override;

private:
    void makePanel();
    void watch(PicturePreview *preview);

    PanelMaker m_maker;
    BubbleModel m_model;
    std::optional<OverlayPanel> m_panel;
    std::optional<QRectF> m_lastFrame; ///< when a bubble was last hidden
    QVariantAnimation m_growth;        ///< of the panel's size
};

} // namespace zivra
