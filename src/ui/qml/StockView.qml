import QtQuick
import QtQuick.Layouts
import KvtEditor

// Looks for factory files in the service's library, and fetches the one that is selected.
Item {
    id: root

    readonly property AppState appState: app // qmllint disable unqualified
    readonly property VOXField searchField: keywordField.input

    function search(): void {
        appState.stockSearchFields(makeField.text, typeBox.currentIndex > 0 ? typeBox.currentText : "",
            folderField.text, moduleField.text, modelField.text, osField.text, keywordField.text,
            sortBox.currentText, orderBox.currentText);
    }

    function clear(): void {
        results.selected = -1;
        appState.clearStock();
    }

    objectName: "stockView"

    RowLayout {
        anchors { fill: parent; margins: 20 }
        spacing: 16

        SideCard {
            view: root

            VOXScroll {
                objectName: "stockFilters"
                // What starts the search stays below it, in sight.
                Layout.maximumHeight: implicitHeight

                ColumnLayout {
                    spacing: 8
                    Layout.fillWidth: true
                    Keys.onReturnPressed: event => event.isAutoRepeat || root.search()
                    Keys.onEnterPressed: event => event.isAutoRepeat || root.search()

                    VOXTextField {
                        id: makeField
                        objectName: "stockMakeField"
                        title: "Make"
                    }

                    SmallLabel {
                        objectName: "stockModuleLabel"
                        text: "Module Type"
                        Layout.bottomMargin: -4
                    }

                    VOXTextField {
                        id: moduleField
                        objectName: "stockModuleField"
                        title: "Module type"
                    }

                    SmallLabel {
                        objectName: "stockTypeLabel"
                        text: "File type"
                        Layout.bottomMargin: -4
                    }

                    FormDropDown {
                        id: typeBox
                        objectName: "stockTypeBox"
                        model: ["Any", "kvt", "ctz", "bin", "ford"]
                        Accessible.name: "File type"
                    }

                    VOXTextField {
                        id: folderField
                        objectName: "stockFolderField"
                        title: "Path folder"
                    }

                    VOXTextField {
                        id: osField
                        objectName: "stockOsField"
                        title: "OS / Cal ID"
                    }

                    VOXTextField {
                        id: modelField
                        objectName: "stockModelField"
                        title: "Model"
                    }

                    VOXTextField {
                        id: keywordField
                        objectName: "stockKeywordField"
                        hint: "Ctrl+F"
                        title: "Keyword"
                    }

                    FormDropDown {
                        id: sortBox
                        objectName: "stockSortBox"
                        prefix: "Sort by: "
                        model: ["make", "os", "module_type", "filename", "size", "year"]
                        Accessible.name: "Sort by"
                    }

                    FormDropDown {
                        id: orderBox
                        objectName: "stockOrderBox"
                        prefix: "Order: "
                        model: ["asc", "desc"]
                        Accessible.name: "Order"
                    }
                }
            }

            RowLayout {
                spacing: 10

                VOXButton {
                    objectName: "stockSearchButton"
                    text: "SEARCH"
                    orange: true
                    Layout.preferredWidth: 160
                    onClicked: root.search()
                }

                VOXButton {
                    objectName: "stockClearButton"
                    text: "CLEAR"
                    Layout.preferredWidth: 80
                    onClicked: root.clear()
                }
            }

            VOXLabel {
                objectName: "stockCountLine"
                text: results.count + " match(es) found."
            }

            Item {
                Layout.fillHeight: true
            }
        }

        StockResults {
            id: results
            objectName: "stockResults"
            Layout.fillHeight: true
        }
    }

    component SmallLabel: VOXLabel {
        font { pixelSize: 11; weight: Font.DemiBold }
        Accessible.ignored: true
    }
}
