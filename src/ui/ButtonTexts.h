#pragma once

/// Disables automatic mnemonics; Qt treats & as one by default, also in the name of a folder. To be called
/// before the first view is made.
void disableAutoMnemonics();
