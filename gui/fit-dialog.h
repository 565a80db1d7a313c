#pragma once

class QDialog;
class QSize;
class QWidget;
class TPictureView;

/// For dialogs that are about to be shown: a picture with the button to close it below.

/// True if the dialog and its frame are larger than what its screen has free.
bool ExceedsScreen(const QDialog& dialog);

/// Reduces the picture, which has `fullSize`, until the dialog around it fits.
void ReduceToScreen(QDialog& dialog, TPictureView& view, QWidget& closeButton, QSize fullSize);

/// Moves a dialog that fits until nothing of it is off the free part of its screen.
void MoveOntoScreen(QDialog& dialog);
