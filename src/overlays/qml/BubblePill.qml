import QtQuick
import Zivra.Shapes
import Zivra.Ui

// The bubble's own controls: three sizes and the way out.
RoundedShape {
    id: pill

    required property QtObject model

    width: row.width + 16
    height: row.height + 8
    color: Qt.rgba(0, 0, 0, 0.65)

    Row {
        id: row

        x: 8
        y: 4
        spacing: 4

        Repeater {
            model: [
                { help: "Small", dot: 6 },
                { help: "Medium", dot: 9 },
                { help: "Large", dot: 12 }
            ]

            PlainButton {
                id: size

                width: 20
                height: 20
                help: modelData.help
                onClicked: pill.model.chooseSize(index)

                RoundedShape {
                    anchors.centerIn: parent
                    width: modelData.dot
                    height: modelData.dot
                    color: Qt.rgba(1, 1, 1, pill.model.size === index ? 1 : size.hovered ? 0.7 : 0.45)
                }
            }
        }

        Rectangle {
            anchors.verticalCenter: parent.verticalCenter
            width: 1
            height: 14
            color: Qt.rgba(1, 1, 1, 0.4)
        }

        SymbolButton {
            width: 20
            height: 20
            symbol: "xmark"
            symbolSize: 10
            help: "Hide camera"
            onClicked: pill.model.close()
        }
    }
}
