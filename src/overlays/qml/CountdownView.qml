import QtQuick
import Zivra.Shapes
import Zivra.Ui

Item {
    id: view

    required property QtObject model

    Column {
        anchors.centerIn: parent
        spacing: 18

        Item {
            anchors.horizontalCenter: parent.horizontalCenter
            width: 180
            height: 180

            RoundedShape {
                anchors.fill: parent
                color: "#c7000000"
                lineColor: Colors.brand
                lineWidth: 4
            }

            RollingNumber {
                anchors.fill: parent
                value: view.model.value
            }
        }

        Row {
            anchors.horizontalCenter: parent.horizontalCenter
            spacing: 10

            LabelPill {
                text: "Cancel"
                onClicked: view.model.complete(false)
            }

            LabelPill {
                text: "Skip"
                onClicked: view.model.complete(true)
            }
        }
    }
}
