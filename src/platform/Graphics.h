#pragma once

/// Whether no GPU is available, so that OpenGL would be emulated by the processor, at twice the time and
/// memory of software rendering. Asks the X display, or looks for a render node under Wayland; does not start
/// OpenGL; needs the application object. False where it is not known.
bool hasNoGraphicsCard();
