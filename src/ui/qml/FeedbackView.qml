import QtQuick
import QtQuick.Layouts
import KvtEditor

// Tickets to the makers of the program: opened, read and replied to.
Item {
    id: root

    readonly property AppState appState: app // qmllint disable unqualified
    readonly property VOXField searchField: ticketField.input
    readonly property bool loaded: appState.threadText !== ""

    function loadConversation(): void {
        appState.loadTicket(ticketField.text);
    }

    objectName: "feedbackView"

    // A new ticket's number would be gone with the next status.
    Connections {
        target: root.appState
        function onStatusChanged(): void {
            const opened = "Ticket: ";
            if (ticketField.text === "" && root.appState.statusOK === 1 && root.appState.status.startsWith(opened))
                ticketField.text = root.appState.status.slice(opened.length);
        }
    }

    RowLayout {
        anchors { fill: parent; margins: 20 }
        spacing: 16

        SideCard {
            view: root

            VOXScroll {
                FormDropDown {
                    id: typeBox
                    objectName: "ticketTypeBox"
                    model: ["general", "bug", "feature", "dev"]
                    Accessible.name: "Ticket type"
                }

                VOXTextField {
                    id: nameField
                    objectName: "ticketNameField"
                    title: "Your name"
                }

                VOXTextField {
                    id: emailField
                    objectName: "ticketEmailField"
                    title: "Email"
                }

                VOXTextField {
                    id: descriptionField
                    objectName: "ticketDescriptionField"
                    title: "Description"
                    unlimitedLength: true
                }

                VOXButton {
                    objectName: "ticketSubmitButton"
                    text: "Submit ticket"
                    orange: true
                    onClicked: root.appState.submitTicket(typeBox.currentText, nameField.text,
                        emailField.text, descriptionField.text)
                }

                VOXTextField {
                    id: ticketField
                    hint: "Ctrl+F"
                    objectName: "ticketIdField"
                    title: "Ticket id"
                    Keys.onReturnPressed: event => event.isAutoRepeat || root.loadConversation()
                    Keys.onEnterPressed: event => event.isAutoRepeat || root.loadConversation()
                }

                RowLayout {
                    spacing: 10

                    VOXButton {
                        objectName: "ticketLoadButton"
                        text: "Load conversation"
                        Layout.preferredWidth: 160
                        Layout.minimumWidth: implicitWidth
                        onClicked: root.loadConversation()
                    }

                    VOXButton {
                        objectName: "ticketUpdateButton"
                        text: "Check update"
                        Layout.preferredWidth: 120
                        Layout.minimumWidth: implicitWidth
                        onClicked: root.appState.checkUpdate()
                    }
                }

                // No Return in this one: the field keeps its text, and a second press would send it twice.
                VOXTextField {
                    id: replyField
                    objectName: "ticketReplyField"
                    title: "Reply"
                    unlimitedLength: true
                }

                VOXButton {
                    objectName: "ticketReplyButton"
                    text: "Send reply"
                    orange: true
                    onClicked: root.appState.replyTicket(ticketField.text, replyField.text)
                }

                Item {
                    Layout.fillHeight: true
                }
            }
        }

        VOXCard {
            title: "Log"
            Layout.fillHeight: true

            TextLog {
                objectName: "ticketLog"
                name: root.loaded ? "Conversation" : "Log"
                text: root.loaded ? root.appState.threadText : root.appState.status
                onCopyWanted: root.appState.copyText(text, name)
                Layout.fillWidth: true
                Layout.fillHeight: true
            }
        }
    }
}
