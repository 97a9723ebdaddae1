#pragma once

#include <QObject>
#include <QString>
#include <QtPlugin>

#include "zavo/zavoexport.h"

class QWidget;

// A plug-in's page in the host's options dialog. The host asks for the widget, shows it and
// calls apply() when the user confirms.
class ZAVO_HOST_EXPORT AbstractOptionsPage : public QObject {
    Q_OBJECT

public:
    explicit AbstractOptionsPage(QObject* parent = nullptr);
    ~AbstractOptionsPage() override;

    virtual QString name() const = 0;
    virtual QString displayName() const = 0;
    virtual QString category() const = 0;
    virtual QString displayCategory() const = 0;
    // orgName() of the factory the page belongs to.
    virtual QString factoryName() const = 0;
    virtual bool showSaveCloseButtons() const { return true; }
    // A new widget, child of `parent`, showing the current settings.
    virtual QWidget* createPage(QWidget* parent) = 0;

signals:
    void itemChanged();
    void optionsSaved();
    void suffixChanged();

public slots:
    virtual void apply() = 0;
};

#define AbstractOptionsPage_iid "com.nuvia.optionspage/1.0"
Q_DECLARE_INTERFACE(AbstractOptionsPage, AbstractOptionsPage_iid)
