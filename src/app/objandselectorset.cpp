#include "app/objandselectorset.h"

ObjAndSelectorSet::ObjAndSelectorSet(QObject *object, QByteArray selector, quintptr hotKeyRef)
    : mObjId(object)
    , mObjSel(std::move(selector))
    , mpHotKeyRef(hotKeyRef)
{
}

void ObjAndSelectorSet::fire() const
{
    if (!mObjId || mObjSel.isEmpty())
        return;
    QMetaObject::invokeMethod(mObjId.data(), mObjSel.constData());
}
