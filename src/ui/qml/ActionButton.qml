import QtQuick
import Zivra.Shapes

// A push button with a text; the prominent one is what Return does.
PlainButton {
    id: button

    property string text
    property bool prominent: false

    implicitWidth: Math.ceil(label.implicitWidth) + 24
    implicitHeight: Math.ceil(label.implicitHeight) + 10
    accessibleName: text

    RoundedShape {
        anchors.fill: parent
        radius: 6
        continuous: true
        color: button.prominent ? Colors.brand : Qt.rgba(1, 1, 1, 0.16)
    }

    RoundedShape {
        anchors.fill: parent
        radius: 6
        continuous: true
        color: button.pressed ? "black" : "white"
        opacity: button.pressed ? 0.18 : button.hovered ? 0.12 : 0

        Behavior on opacity {
            NumberAnimation {
                duration: 150
                easing.type: Easing.OutQuad
            }
        }
    }

    Text {
        id: label

        anchors.centerIn: parent
        text: button.text
        color: "white"
        font.pixelSize: 13
        font.weight: button.prominent ? Font.DemiBold : Font.Medium
        renderType: Text.NativeRendering
    }
}
