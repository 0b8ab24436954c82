import QtQuick
import Zivra.Shapes

// A symbol in a round button.
PlainButton {
    id: button

    property string symbol
    property color tint: "white"
    property bool active: false
    property real symbolSize: 18

    implicitWidth: 34
    implicitHeight: 34

    RoundedShape {
        anchors.fill: parent
        color: "white"
        opacity: button.active ? 1 : button.pressed ? 0.24 : button.hovered ? 0.14 : 0

        Behavior on opacity {
            NumberAnimation {
                duration: 150
                easing.type: Easing.OutQuad
            }
        }
    }

    Symbol {
        anchors.centerIn: parent
        width: button.symbolSize
        height: button.symbolSize
        name: button.symbol
        color: button.active ? Colors.brand : button.tint
    }
}
