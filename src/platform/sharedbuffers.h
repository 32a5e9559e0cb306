#pragma once

#include <QByteArray>
#include <QList>

// Makes values with the very same bytes share one buffer: the two text types
// of a state, a picture copied under two names, the text a backup file holds
// once per text type. Only values of one size are compared, one buffer is
// equal to itself without a look at its bytes, and empty values stay as they
// are.
void shareEqualBuffers(const QList<QByteArray *> &values);
