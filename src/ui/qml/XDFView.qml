pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import KvtEditor

// The store of XDF definitions: the user's account, and what there is for the open file's first module.
Item {
    id: root

    readonly property AppState appState: app // qmllint disable unqualified

    // A key that is held signs in once.
    function signIn(event: var): void {
        if (!event.isAutoRepeat)
            appState.xdfLogin();
    }

    function openStore(): void {
        const address = appState.storeUrl();
        if (address === "")
            appState.setStatus("There is no store address.", 0);
        else
            Qt.openUrlExternally(address);
    }

    objectName: "xdfView"

    RowLayout {
        anchors { fill: parent; margins: 20 }
        spacing: 16

        SideCard {
            objectName: "xdfWorkspace"
            view: root

            VOXScroll {
                ColumnLayout {
                    spacing: 10
                    Layout.fillWidth: true
                    Keys.onReturnPressed: event => root.signIn(event)
                    Keys.onEnterPressed: event => root.signIn(event)

                    VOXTextField {
                        objectName: "xdfEmailField"
                        title: "Email"
                        text: root.appState.xdfEmail
                        onEdited: value => root.appState.xdfEmail = value
                    }

                    VOXTextField {
                        objectName: "xdfPasswordField"
                        title: "Password"
                        secret: true
                        text: root.appState.xdfPassword
                        onEdited: value => root.appState.xdfPassword = value
                    }
                }

                RowLayout {
                    spacing: 10

                    VOXButton {
                        objectName: "xdfLoginButton"
                        text: "LOGIN"
                        orange: true
                        Layout.preferredWidth: 140
                        onClicked: root.appState.xdfLogin()
                    }

                    VOXButton {
                        objectName: "xdfRegisterButton"
                        text: "REGISTER"
                        Layout.preferredWidth: 140
                        onClicked: root.openStore()
                    }
                }

                VOXButton {
                    objectName: "xdfForgotButton"
                    text: "FORGOT PASSWORD?"
                    onClicked: root.openStore()
                }

                VOXTextField {
                    objectName: "xdfOsField"
                    title: "OS (module 1)"
                    text: root.appState.moduleOneOS
                    locked: true
                }

                VOXButton {
                    objectName: "xdfCatalogButton"
                    text: "Load catalog"
                    onClicked: root.appState.xdfCatalog()
                }

                VOXTextField {
                    objectName: "xdfTokenField"
                    title: "XDF session token"
                    text: root.appState.xdfToken
                    locked: true
                }

                VOXTextField {
                    objectName: "xdfCreditsField"
                    title: "Credits"
                    text: root.appState.xdfCredits
                    hint: "Read when you log in or list patches"
                    locked: true
                }

                Item {
                    Layout.fillHeight: true
                }
            }
        }

        VOXCard {
            objectName: "xdfCatalogCard"
            title: "Identifiers"
            Layout.fillHeight: true

            VOXList {
                id: items
                objectName: "xdfList"
                name: "Catalog"
                model: RowModel {
                    rows: root.appState.xdfItems
                    resetting: true
                    // Announced when the list itself has seen to the reset.
                    onRowsChanged: {
                        items.currentIndex = -1;
                        items.positionViewAtBeginning();
                    }
                }
                onChosen: row => root.appState.xdfDownload(row)
                Keys.forwardTo: catalogText.visible ? [catalogText] : []
                Layout.fillWidth: true
                Layout.fillHeight: true

                delegate: OfferRow {
                    required property var row

                    objectName: "xdfItem" + index
                    title: row.title
                    about: row.os
                    credits: row.credits
                    action: "Download"
                    actionWidth: 110
                    onWanted: root.appState.xdfDownload(index)
                }

                CatalogText {
                    id: catalogText
                    objectName: "xdfCatalogText"
                    parent: items
                    anchors { fill: parent; margins: 2 }
                    visible: items.count === 0
                    text: root.appState.catalogText
                }
            }
        }
    }
}
