#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

// The general pasteboard as the history sees it: one current state, made of
// named types with raw data, and a change count that moves whenever the state
// is replaced (by another program or by our own declareTypes()).
//
// Type names are the program's own ("NSStringPboardType", "public.tiff", ...);
// the implementation maps desktop formats to and from them. Reads answer from
// the current state at once and never wait on another program.
class Pasteboard
{
public:
    virtual ~Pasteboard() = default;

    virtual int changeCount() const = 0;
    // The types of the current state, in the order the owner offered them.
    virtual QStringList types() const = 0;
    // A null QByteArray when the type is absent or carries no data.
    virtual QByteArray dataForType(const QString &type) const = 0;
    // The data of the type as UTF-8 text; a null QString when there is none.
    QString stringForType(const QString &type) const;

    // Replaces the state by the given types, all without data yet, and takes
    // the next change count, which it returns.
    virtual int declareTypes(const QStringList &types) = 0;
    // Gives data to a type declared by the last declareTypes(); false otherwise.
    virtual bool setData(const QByteArray &data, const QString &type) = 0;
};
