#pragma once

#include <QStringView>

// The integer a text starts with, read as the user defaults and the history's
// sequence numbers always have: blanks skipped, an optional sign, then digits
// up to the first other character, saturating at the qint64 range; a text
// without digits reads as 0 ("12abc" is 12, "abc" is 0).
qint64 leadingInteger(QStringView text);
