#include "settingsstore.h"

#include <QDir>
#include <QStandardPaths>

SettingsStore::SettingsStore(const QString& iniFile) : m_settings(iniFile, QSettings::IniFormat) {}

void SettingsStore::registerKeys(const QString& group, const QMap<QString, QVariant>& defaults,
                                 const QMap<QString, QString>& descriptions) {
    for (auto it = defaults.begin(); it != defaults.end(); ++it)
        m_defaults.insert(path(group, it.key()), it.value());
    for (auto it = descriptions.begin(); it != descriptions.end(); ++it)
        m_descriptions.insert(path(group, it.key()), it.value());
}

bool SettingsStore::isRegistered(const QString& group, const QString& key) const {
    return m_defaults.contains(path(group, key));
}

QVariant SettingsStore::value(const QString& group, const QString& key) const {
    if (const auto run = m_runValues.find(key); run != m_runValues.end()) return run.value();
    return m_settings.value(path(group, key), m_defaults.value(path(group, key)));
}

QString SettingsStore::description(const QString& group, const QString& key) const {
    return m_descriptions.value(path(group, key));
}

void SettingsStore::setValue(const QString& group, const QString& key, const QVariant& value) {
    m_settings.setValue(path(group, key), value);
    m_settings.sync();
}

void SettingsStore::setRunValue(const QString& key, const QVariant& value) {
    m_runValues.insert(key, value);
}

bool SettingsStore::ok() {
    m_settings.sync();
    return m_settings.status() == QSettings::NoError;
}

QString defaultSettingsFile() {
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    return QDir(folder).filePath("zavo-fbx-export/settings.ini");
}
