import QtQuick

// A text whose digits are all equally wide, so that it does not tremble while it counts.
Row {
    id: row

    property string text
    property font font
    property color color: "white"

    Accessible.role: Accessible.StaticText
    Accessible.name: text

    TextMetrics {
        id: digit

        font: row.font
        text: "0"
    }

    Repeater {
        model: row.text.length

        Text {
            readonly property string character: row.text.charAt(index)

            width: character >= "0" && character <= "9" ? digit.advanceWidth : implicitWidth
            horizontalAlignment: Text.AlignHCenter
            text: character
            font: row.font
            color: row.color
            renderType: Text.NativeRendering
        }
    }
}
