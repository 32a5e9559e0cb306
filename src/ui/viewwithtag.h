#pragma once

class QWidget;

// The descendant of root whose "tag" property is tag, or null. Boxes that
// only know their parts by number (the way the forms tag them) find them so.
QWidget *viewWithTag(const QWidget *root, int tag);
