#pragma once

#include "ui/VectorItem.h"

#include <QColor>
#include <QString>

namespace zivra {

/// One of our symbols in one colour. They are drawn for 18 points and their lines are 1.5 wide there.
///
/// A name that ends in ".slash" is the symbol before that, struck through.
class Symbol : public VectorItem {
    Q_OBJECT
    Q_PROPERTY(QString name MEMBER m_name NOTIFY changed)
    Q_PROPERTY(QColor color MEMBER m_color NOTIFY changed)

public:
    explicit Symbol(QQuickItem *parent = nullptr);

Q_SIGNALS:
    void changed();

protected:
    [[nodiscard]] Painting painting() const override;

private:
    QString m_name;
    QColor m_color = Qt::white;
};

} // namespace zivra
