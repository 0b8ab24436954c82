import QtQuick
import Zivra.Shapes
import Zivra.Ui

// The red disc that ends the recording, with the recorded time under it.
PlainButton {
    id: button

    property string time
    property bool isPaused: false

    implicitWidth: Math.max(34, Math.ceil(label.width))
    implicitHeight: 38 + Math.ceil(label.height)
    tipEdge: Qt.RightEdge

    RoundedShape {
        id: disc

        anchors.horizontalCenter: parent.horizontalCenter
        width: 34
        height: 34
        color: button.pressed ? Qt.darker(Colors.red, 1.2) : Colors.red
    }

    RoundedShape {
        anchors.fill: disc
        color: "white"
        opacity: button.hovered && !button.pressed ? 0.16 : 0

        Behavior on opacity {
            NumberAnimation {
                duration: 150
                easing.type: Easing.OutQuad
            }
        }
    }

    RoundedShape {
        anchors.centerIn: disc
        width: 12
        height: 12
        radius: 3
        continuous: true
        color: "white"
    }

    DigitRow {
        id: label

        anchors.horizontalCenter: parent.horizontalCenter
        y: 38
        text: button.time
        color: button.isPaused ? Colors.orange : "white"
        font.pixelSize: 10
        font.weight: Font.DemiBold
    }
}
