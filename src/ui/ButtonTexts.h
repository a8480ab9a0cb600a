#pragma once

/// Has the texts of buttons taken as they are. Left alone, the framework makes Alt and the character behind
/// an ampersand press the button, be it a blank or a letter in the name of a folder. Before the first view is
/// made.
void takeButtonTextsAsTheyAre();
