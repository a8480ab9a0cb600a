#pragma once

/// Whether graphics cards are out of the window's reach, so that OpenGL would be emulated by the processor,
/// at twice the time and memory of plain drawing. Asks the display, without starting OpenGL; needs
/// the application object. False where it is not known.
bool hasNoGraphicsCard();
