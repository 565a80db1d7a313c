#pragma once

class QDialog;
class QSize;
class QWidget;
class TPictureView;

/// For windows that are about to be shown. The dialogs are a picture with the button to close it below.

/// True if the dialog and its frame are wider or higher than what its screen has free.
bool ExceedsScreen(const QDialog& dialog);

/// Reduces the picture, which has `fullSize`, until the dialog around it fits.
void ReduceToScreen(QDialog& dialog, TPictureView& view, QWidget& closeButton, QSize fullSize);

/// Moves a dialog that fits until nothing of it is off the free part of its screen.
void MoveOntoScreen(QDialog& dialog);

/// Makes a window that is higher than its screen, so that neither its title bar nor its lower edge could be reached, as
/// large as the screen allows.
void ShrinkToScreen(QWidget& window);
