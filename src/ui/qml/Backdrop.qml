import QtQuick
import KvtEditor

// The gradient behind the whole window, with a soft glow at the top.
Item {
    Rectangle {
        anchors.fill: parent
        gradient: Gradient {
            GradientStop { position: 0; color: VOXTheme.backdropTop }
            GradientStop { position: 0.5; color: VOXTheme.bg }
            GradientStop { position: 1; color: VOXTheme.backdropBottom }
        }
    }

    Rectangle {
        anchors.fill: parent
        gradient: Gradient {
            GradientStop { position: 0; color: VOXTheme.accent(0.12) }
            GradientStop { position: 0.4; color: "transparent" }
        }
    }
}
