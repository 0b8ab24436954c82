import QtQuick
import Zivra.Shapes
import Zivra.Ui

Item {
    id: view

    required property QtObject model

    readonly property bool isDrawing: model.offersDrawing && model.drawing.isDrawing

    implicitWidth: Math.ceil(controls.width) + 26
    implicitHeight: Math.ceil(controls.height) + 32

    RoundedShape {
        anchors.fill: parent
        anchors.margins: 6
        radius: -1
        color: Qt.rgba(0.11, 0.11, 0.11, 0.94)
        lineColor: Qt.rgba(1, 1, 1, 0.12)
        lineWidth: 1
    }

    Column {
        id: controls

        anchors.horizontalCenter: parent.horizontalCenter
        anchors.bottom: parent.bottom
        anchors.bottomMargin: 16
        spacing: 4
        enabled: view.model.isRecording
        opacity: enabled ? 1 : 0.4

        FinishButton {
            anchors.horizontalCenter: parent.horizontalCenter
            help: view.model.finishHelp
            time: view.model.time
            isPaused: view.model.isPaused
            onClicked: view.model.finish()
        }

        Divider {}

        BarButton {
            symbol: view.model.isPaused ? "play.fill" : "pause.fill"
            tint: view.model.isPaused ? Colors.orange : "white"
            help: view.model.pauseHelp
            onClicked: view.model.togglePause()
        }

        BarButton {
            symbol: "arrow.counterclockwise"
            help: view.model.restartHelp
            onClicked: view.model.restart()
        }

        BarButton {
            symbol: "trash"
            help: view.model.cancelHelp
            onClicked: view.model.cancel()
        }

        Divider {
            visible: view.model.offersDrawing
        }

        BarButton {
            visible: view.model.offersDrawing
            symbol: "pencil.tip"
            help: "Draw"
            active: view.model.drawing.isDrawing
            onClicked: view.model.drawing.isDrawing = !view.model.drawing.isDrawing
        }

        Column {
            visible: view.isDrawing
            anchors.horizontalCenter: parent.horizontalCenter
            topPadding: 4
            bottomPadding: 4
            spacing: 6

            Repeater {
                model: view.model.drawing.palette

                Swatch {
                    anchors.horizontalCenter: parent.horizontalCenter
                    color: modelData
                    accessibleName: ["Red", "Orange", "Yellow", "Green", "Blue", "Purple", "White", "Black"][index]
                    isChosen: Qt.colorEqual(view.model.drawing.color, modelData)
                    onClicked: view.model.drawing.color = modelData
                }
            }

            BarButton {
                symbol: "eraser"
                help: "Clear drawings"
                onClicked: view.model.drawing.clear()
            }
        }

        BarButton {
            visible: view.model.offersCamera
            symbol: view.model.cameraHidden ? "video.slash" : "video"
            help: view.model.cameraHidden ? "Show camera" : "Hide camera"
            onClicked: view.model.toggleCamera()
        }
    }

    component BarButton: SymbolButton {
        anchors.horizontalCenter: parent.horizontalCenter
        tipEdge: Qt.RightEdge
    }

    component Divider: Item {
        anchors.horizontalCenter: parent.horizontalCenter
        width: 24
        height: 9

        Rectangle {
            y: 4
            width: 24
            height: 1
            color: "white"
            opacity: 0.15
        }
    }
}
