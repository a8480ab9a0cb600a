import QtQml

// One column of a list.
QtObject {
    // The member of the row's data.
    property string key
    // The object name of its cells.
    property string cell: key
    property string title
    // 0 fills the space that the other columns leave.
    property int width: 0
    // The title within a sentence.
    readonly property string spoken: title === title.toUpperCase() ? title : title.toLowerCase()
}
