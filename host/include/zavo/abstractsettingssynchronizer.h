#pragma once

#include <QString>
#include <QVariant>

#include "zavo/zavoexport.h"

// A plug-in's window into the host's settings store, for the keys it registered.
class ZAVO_HOST_EXPORT AbstractSettingsSynchronizer {
public:
    virtual ~AbstractSettingsSynchronizer();

    // The stored value of `key`, or its registered default when nothing is stored.
    virtual QVariant value(const QString& key) const = 0;
    // The description registered with `key`.
    virtual QString description(const QString& key) const = 0;
    virtual void setValue(const QString& key, const QVariant& value) = 0;
};
