import QtQuick

// A large number. When it changes, the old one leaves downwards and the next comes from above, as on a
// spring that overshoots a little.
Item {
    id: number

    required property int value
    property int previous: value
    property int shown: value
    // From 0 to 1 in the time of the transition.
    property real time: 1
    // A spring with a response of 0.5 s and a damping fraction of 0.85.
    readonly property real moved: 1 - Math.exp(-10.68 * time * 0.6)
        * (Math.cos(6.62 * time * 0.6) + 1.613 * Math.sin(6.62 * time * 0.6))
    readonly property real travel: height * 0.3

    Accessible.role: Accessible.StaticText
    Accessible.name: shown

    onValueChanged: {
        if (value !== shown) {
            previous = shown
            shown = value
            transition.restart()
        }
    }

    NumberAnimation {
        id: transition

        target: number
        property: "time"
        from: 0
        to: 1
        duration: 600
    }

    component Digits: Text {
        anchors.horizontalCenter: parent.horizontalCenter
        color: "white"
        font.pixelSize: 92
        font.weight: Font.Bold
        renderType: Text.NativeRendering
        // The digits stand on the line and have nothing below it: their middle is above that of the text.
        y: Math.round((parent.height - metrics.tightBoundingRect.height) / 2 - metrics.tightBoundingRect.y - baselineOffset)
            + offset

        property real offset: 0
    }

    TextMetrics {
        id: metrics

        font.pixelSize: 92
        font.weight: Font.Bold
        text: "0"
    }

    Digits {
        visible: opacity > 0
        opacity: number.time < 1 ? Math.max(0, 1 - 1.6 * number.moved) : 0
        offset: number.moved * number.travel
        text: number.previous
    }

    Digits {
        opacity: number.time < 1 ? Math.min(1, Math.max(0, number.moved)) : 1
        offset: number.time < 1 ? (number.moved - 1) * number.travel : 0
        text: number.shown
    }
}
