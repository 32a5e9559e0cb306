#include "platform/sharedbuffers.h"

#include <cstring>

void shareEqualBuffers(const QList<QByteArray *> &values)
{
    for (qsizetype i = 1; i < values.size(); ++i) {
        QByteArray &data = *values[i];
        if (data.isEmpty())
            continue;
        for (qsizetype j = 0; j < i; ++j) {
            const QByteArray &earlier = *values[j];
            if (earlier.size() != data.size())
                continue;
            if (earlier.constData() == data.constData())
                break;
            if (std::memcmp(earlier.constData(), data.constData(), size_t(data.size())) == 0) {
                data = earlier;
                break;
            }
        }
    }
}
