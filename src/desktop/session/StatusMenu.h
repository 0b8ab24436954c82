#pragma once

#include "platform/StatusItem.h"

#include <QMenu>

namespace zivra::desktop {

/// The status item's menu, built afresh from its provider each time it opens. Key equivalents work while
/// it is open.
class StatusMenu final : public QMenu {
public:
    StatusMenu();

    void setProvider(std::function<std::vector<MenuItem>()> provider) { m_provider = std::move(provider); }

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    void fill();
    void addItem(const MenuItem &item);

    std::function<std::vector<MenuItem>()> m_provider;
};

} // namespace zivra::desktop
