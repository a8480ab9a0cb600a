import QtQml

// One column of a list.
QtObject {
    // Of the row's value.
    property string key
    // What its cells are called.
    property string cell: key
    property string title
    // 0 takes what the other columns leave.
    property int width: 0
    // The title within a sentence.
    readonly property string spoken: title === title.toUpperCase() ? title : title.toLowerCase()
}
