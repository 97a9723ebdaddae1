#pragma once

#include <zavo/abstractsettingssynchronizer.h>
#include <QMap>
#include <QSettings>
#include <QString>
#include <QVariant>
#include <memory>

// The host's settings store: an INI file with one group per plug-in, the defaults and
// descriptions each plug-in registered, and values given for one run (the command line's
// export settings) laid over the stored ones without being saved.
class SettingsStore {
public:
    explicit SettingsStore(const QString& iniFile);

    void registerKeys(const QString& group, const QMap<QString, QVariant>& defaults,
                      const QMap<QString, QString>& descriptions);
    bool isRegistered(const QString& group, const QString& key) const;
    // The value for this run, else the stored one, else the registered default.
    QVariant value(const QString& group, const QString& key) const;
    QString description(const QString& group, const QString& key) const;
    // Saves `value` in the INI file.
    void setValue(const QString& group, const QString& key, const QVariant& value);
    // Uses `value` for this run only.
    void setRunValue(const QString& key, const QVariant& value);
    QString fileName() const { return m_settings.fileName(); }
    // Whether the file could be read and every write reached it.
    bool ok();

private:
    static QString path(const QString& group, const QString& key) { return group + '/' + key; }

    QSettings m_settings;
    QMap<QString, QVariant> m_defaults;
    QMap<QString, QString> m_descriptions;
    QMap<QString, QVariant> m_runValues;
};

// A plug-in's window into the store, for the group its keys were registered in. It shares the
// store, because the plug-in's factory owns it and may outlive the host objects.
class StoreSettingsSynchronizer : public AbstractSettingsSynchronizer {
public:
    StoreSettingsSynchronizer(std::shared_ptr<SettingsStore> store, QString group)
        : m_store(std::move(store)), m_group(std::move(group)) {}

    QVariant value(const QString& key) const override { return m_store->value(m_group, key); }
    QString description(const QString& key) const override {
        return m_store->description(m_group, key);
    }
    void setValue(const QString& key, const QVariant& value) override {
        m_store->setValue(m_group, key, value);
    }

private:
    std::shared_ptr<SettingsStore> m_store;
    QString m_group;
};

// The store's file when the user names none: settings.ini in the program's folder of the
// user's configuration folder.
QString defaultSettingsFile();
