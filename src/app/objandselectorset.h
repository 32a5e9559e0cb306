#pragma once

#include <QByteArray>
#include <QObject>
#include <QPointer>

// One hot key registration: which method of which object a press calls, and
// the registration's reference.
class ObjAndSelectorSet
{
public:
    ObjAndSelectorSet() = default;
    ObjAndSelectorSet(QObject *object, QByteArray selector, quintptr hotKeyRef);

    // Calls the method, without argument. Nothing happens when the object is
    // gone or no method was named.
    void fire() const;
    quintptr getHotKeyRef() const { return mpHotKeyRef; }

private:
    // Not an owner: the object may go away while the key stays registered.
    QPointer<QObject> mObjId;
    QByteArray mObjSel;
    quintptr mpHotKeyRef = 0;
};
