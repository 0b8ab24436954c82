import QtQuick
import Zivra.Shapes
import Zivra.Ui

Item {
    id: view

    required property QtObject model

    // Of whole points, so that the dimmed parts meet without a seam at fractional scale factors.
    readonly property rect area: model.area

    focus: true
    Accessible.role: Accessible.Dialog
    Accessible.name: "Custom size recording"
    Keys.onEscapePressed: model.cancel()
    Keys.onReturnPressed: model.record()
    Keys.onEnterPressed: model.record()

    // The screen but for the selection: above, below, left and right of it.
    Dimming {
        width: view.width
        height: view.model.hasSelection ? view.area.y : view.height
    }

    Dimming {
        visible: view.model.hasSelection
        y: view.area.y + view.area.height
        width: view.width
        height: view.height - y
    }

    Dimming {
        visible: view.model.hasSelection
        y: view.area.y
        width: view.area.x
        height: view.area.height
    }

    Dimming {
        visible: view.model.hasSelection
        x: view.area.x + view.area.width
        y: view.area.y
        width: view.width - x
        height: view.area.height
    }

    MouseArea {
        anchors.fill: parent
        cursorShape: Qt.CrossCursor
        onPressed: (mouse) => view.model.press(Qt.point(mouse.x, mouse.y))
        onPositionChanged: (mouse) => view.model.drag(Qt.point(mouse.x, mouse.y))
        onReleased: (mouse) => view.model.release(Qt.point(mouse.x, mouse.y))
    }

    Rectangle {
        visible: view.model.hasSelection
        x: view.area.x
        y: view.area.y
        width: view.area.width
        height: view.area.height
        color: "transparent"
        border.color: Colors.brand
        border.width: 2
    }

    RoundedShape {
        visible: view.model.hasSelection
        x: view.area.x
        y: Math.max(0, view.area.y - 26)
        width: Math.ceil(readout.width) + 12
        height: Math.ceil(readout.height) + 6
        radius: 4
        continuous: true
        color: Qt.rgba(0, 0, 0, 0.75)

        DigitRow {
            id: readout

            anchors.centerIn: parent
            text: view.model.size
            font.pixelSize: 11
        }
    }

    RoundedShape {
        visible: view.model.canRecord
        x: view.area.x
        y: Math.min(view.area.y + view.area.height + 10, view.height - 56)
        width: actions.width + 16
        height: actions.height + 16
        radius: 10
        continuous: true
        color: "#f0262628"
        lineColor: Qt.rgba(1, 1, 1, 0.14)
        lineWidth: 1

        // Nothing drags out another area from here.
        MouseArea {
            anchors.fill: parent
            cursorShape: Qt.ArrowCursor
        }

        Row {
            id: actions

            x: 8
            y: 8
            spacing: 8

            ActionButton {
                text: "Cancel"
                onClicked: view.model.cancel()
            }

            ActionButton {
                text: "Record this area"
                prominent: true
                onClicked: view.model.record()
            }
        }
    }

    RoundedShape {
        visible: !view.model.hasSelection
        anchors.centerIn: parent
        width: Math.ceil(hint.width) + 44
        height: Math.ceil(hint.height) + 44
        radius: 14
        continuous: true
        color: Qt.rgba(0, 0, 0, 0.65)

        Column {
            id: hint

            anchors.centerIn: parent
            spacing: 6

            Label {
                text: "Custom size recording"
                font.pixelSize: 17
                font.weight: Font.Bold
            }

            Label {
                text: "Drag to select an area. Press Esc to cancel."
                font.pixelSize: 12
            }
        }
    }

    component Dimming: Rectangle {
        color: Qt.rgba(0, 0, 0, 0.45)
    }

    component Label: Text {
        anchors.horizontalCenter: parent.horizontalCenter
        color: "white"
        renderType: Text.NativeRendering
    }
}
