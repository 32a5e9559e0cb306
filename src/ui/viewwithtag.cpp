#include "ui/viewwithtag.h"

#include <QVariant>
#include <QWidget>

QWidget *viewWithTag(const QWidget *root, int tag)
{
    const QList<QWidget *> views = root->findChildren<QWidget *>();
    for (QWidget *view : views) {
        const QVariant value = view->property("tag");
        if (value.isValid() && value.toInt() == tag)
            return view;
    }
    return nullptr;
}
