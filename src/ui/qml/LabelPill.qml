import QtQuick
import Zivra.Shapes

// A text on a dark capsule.
PlainButton {
    id: pill

    property string text

    implicitWidth: Math.ceil(label.implicitWidth) + 36
    implicitHeight: Math.ceil(label.implicitHeight) + 16
    accessibleName: text

    RoundedShape {
        anchors.fill: parent
        color: "black"
        opacity: pill.pressed ? 0.9 : 0.75
    }

    RoundedShape {
        anchors.fill: parent
        color: "white"
        opacity: pill.hovered && !pill.pressed ? 0.14 : 0

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
        text: pill.text
        color: "white"
        font.pixelSize: 13
        font.weight: Font.DemiBold
        renderType: Text.NativeRendering
    }
}
