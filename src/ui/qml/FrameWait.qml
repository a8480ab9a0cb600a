import QtQuick

// Tells when the window has really drawn what was changed before `start`, so that work which blocks the
// window may begin. Two frames are awaited, for the first may have been under way; a window that draws
// nothing goes on all the same.
Item {
    id: root

    property int framesLeft: 0

    signal drawn()

    function start(): void {
        framesLeft = 2;
        fallback.restart();
        Window.window.update();
    }

    function finish(): void {
        framesLeft = 0;
        fallback.stop();
        afterFrame.stop();
        drawn();
    }

    Connections {
        target: root.Window.window
        enabled: root.framesLeft > 0
        function onFrameSwapped(): void {
            root.framesLeft--;
            if (root.framesLeft === 0)
                afterFrame.start();
            else
                root.Window.window.update();
        }
    }

    // Not within the signal, where the frame is still being put away.
    Timer {
        id: afterFrame
        interval: 0
        onTriggered: root.finish()
    }

    Timer {
        id: fallback
        interval: 1000
        onTriggered: root.finish()
    }
}
