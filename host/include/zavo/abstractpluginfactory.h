#pragma once

#include <QString>
#include <QtPlugin>

#include "zavo/zavoexport.h"

class AbstractOptionsPage;
class AbstractSettingsSynchronizer;
class AbstractZavoStudioPluginInterface;

// The object a plug-in library publishes: it names the plug-in, registers its settings and
// hands out its options page.
class ZAVO_HOST_EXPORT AbstractPluginFactory {
public:
    // The host's code for an exporter plug-in, as returned by type().
    static constexpr int ExporterType = 1;

    virtual ~AbstractPluginFactory();

    // Called once after loading; the plug-in registers its settings here.
    virtual void initializePlugin(AbstractZavoStudioPluginInterface& host) = 0;
    virtual QString trName() const = 0;
    virtual QString orgName() const = 0;
    virtual QString version() const = 0;
    virtual int type() const = 0;
    // A new options page; the caller owns it. Null when the plug-in has none.
    virtual AbstractOptionsPage* optionsPage() = 0;
    virtual AbstractSettingsSynchronizer* settingsSynchronizer() const = 0;

    virtual bool canInitializePlugin() const { return true; }
    virtual QString menuEntry() const { return QString(); }
    virtual void onHardwareStatusChanged() {}
    virtual void onRecordingStarted() {}
    virtual void onRecordingStopped() {}
    virtual void startPlugin() {}
    virtual void stopPlugin() {}
};

#define AbstractPluginFactory_iid "com.nuvia.pluginfactory/1.0"
Q_DECLARE_INTERFACE(AbstractPluginFactory, AbstractPluginFactory_iid)
