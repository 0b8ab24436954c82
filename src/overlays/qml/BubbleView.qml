import QtQuick
import Zivra.Camera
import Zivra.Shapes
import Zivra.Ui

Item {
    id: view

    required property QtObject model

    readonly property real corners: model.cameraOnly ? 18 : -1

    Accessible.role: Accessible.Graphic
    Accessible.name: "Camera"

    SoftShadow {
        anchors.fill: parent
        margin: 10
        cornerRadius: view.corners
        color: Qt.rgba(0, 0, 0, 0.35)
    }

    RoundedShape {
        anchors.fill: picture
        radius: view.corners
        color: "#1c1c1e"
    }

    CameraPicture {
        id: picture

        anchors.fill: parent
        anchors.margins: 10
        mirrored: view.model.mirrored
        cornerRadius: view.corners
    }

    RoundedShape {
        visible: !view.model.cameraOnly
        anchors.fill: picture
        lineColor: Qt.rgba(1, 1, 1, 0.9)
        lineWidth: 3
    }

    HoverHandler {
        id: hover
    }

    BubblePill {
        anchors.horizontalCenter: parent.horizontalCenter
        anchors.bottom: picture.bottom
        anchors.bottomMargin: 14
        model: view.model
        visible: opacity > 0
        opacity: hover.hovered && !view.model.cameraOnly ? 1 : 0

        Behavior on opacity {
            NumberAnimation {
                duration: 150
                easing.type: Easing.OutQuad
            }
        }
    }
}
