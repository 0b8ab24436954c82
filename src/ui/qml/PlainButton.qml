import QtQuick

// A button that is nothing but its content: whatever is put in, clickable, with a tooltip.
Item {
    id: button

    property string help
    property string accessibleName: help
    readonly property bool hovered: area.containsMouse
    readonly property bool pressed: area.pressed && area.containsMouse
    // Where the tooltip appears: Qt.RightEdge or Qt.BottomEdge.
    property int tipEdge: Qt.BottomEdge

    signal clicked()

    Accessible.role: Accessible.Button
    Accessible.name: accessibleName
    Accessible.onPressAction: if (enabled) clicked()

    onHoveredChanged: hovered ? tooltips.offer(button, help, tipEdge) : tooltips.withdraw(button)
    onPressedChanged: if (pressed) tooltips.withdraw(button)
    onHelpChanged: if (hovered && !pressed) tooltips.change(button, help)

    MouseArea {
        id: area

        anchors.fill: parent
        hoverEnabled: true
        onClicked: button.clicked()
    }
}
