import QtQuick
import Zivra.Shapes
import Zivra.Ui

// A colour to draw with.
PlainButton {
    id: swatch

    property color color
    property bool isChosen: false

    implicitWidth: 14
    implicitHeight: 14

    RoundedShape {
        anchors.fill: parent
        color: swatch.color
        lineColor: "white"
        lineWidth: swatch.isChosen ? 2 : 0.5
    }
}
