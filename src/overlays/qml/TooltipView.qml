import QtQuick
import Zivra.Shapes

Item {
    id: view

    required property QtObject model

    implicitWidth: Math.ceil(label.implicitWidth) + 18
    implicitHeight: Math.ceil(label.implicitHeight) + 10

    Accessible.role: Accessible.ToolTip
    Accessible.name: model.text

    RoundedShape {
        anchors.fill: parent
        radius: 6
        continuous: true
        color: "#f01c1c1c"
        lineColor: "#2effffff"
        lineWidth: 1
    }

    Text {
        id: label

        anchors.centerIn: parent
        text: view.model.text
        color: "white"
        font.pixelSize: 12
        renderType: Text.NativeRendering
    }
}
