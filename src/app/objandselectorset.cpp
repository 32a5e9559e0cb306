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
    // A method of that name is called directly; an object that keeps its
    // commands in a table of its own answers performSelector() instead.
    QByteArray method = mObjSel;
    if (method.endsWith(':'))
        method.chop(1);
    const QMetaObject *meta = mObjId->metaObject();
    if (meta->indexOfMethod(method + "()") >= 0)
        QMetaObject::invokeMethod(mObjId.data(), method.constData());
    else if (meta->indexOfMethod("performSelector(QByteArray)") >= 0)
        QMetaObject::invokeMethod(mObjId.data(), "performSelector", Q_ARG(QByteArray, mObjSel));
}
