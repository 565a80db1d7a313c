#pragma once

class QString;

/// The text for a tooltip that shows it as it is: no markup, line ends kept, long lines broken.
QString PlainToolTip(const QString& text);
