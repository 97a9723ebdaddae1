#pragma once

#include <QObject>
#include <QString>
#include <QtPlugin>

#include <zavo/abstractoptionspage.h>

class AbstractSettingsSynchronizer;
class QCheckBox;
class QComboBox;
class QGridLayout;
class QWidget;

// The FBX exporter's page in the host's options dialog: one row per export setting. It shows
// the stored values when the page is built and writes them all back on apply.
class FbxExporterOptionsPage : public AbstractOptionsPage {
    Q_OBJECT
    Q_INTERFACES(AbstractOptionsPage)

public:
    // `settings` is the factory's synchronizer; the page does not own it.
    explicit FbxExporterOptionsPage(AbstractSettingsSynchronizer* settings,
                                    QObject* parent = nullptr);

    QString name() const override;
    QString displayName() const override;
    QString category() const override;
    QString displayCategory() const override;
    QString factoryName() const override;
    // The editors belong to the returned widget; the page keeps pointers to them for apply.
    QWidget* createPage(QWidget* parent) override;

public slots:
    // Writes every setting from the editors; does nothing before createPage.
    void apply() override;

private:
    void addRows(QGridLayout* grid);
    void showStoredValues();
    void connectChangeSignals();

    AbstractSettingsSynchronizer* m_settings;
    QComboBox* m_frameSkip = nullptr;
    QCheckBox* m_useCalibrationPose = nullptr;
    QComboBox* m_timeStart = nullptr;
    QComboBox* m_timeIncrement = nullptr;
    QComboBox* m_outputUnit = nullptr;
    QCheckBox* m_walkOnTheSpot = nullptr;
    QComboBox* m_outputPreset = nullptr;
    QComboBox* m_exportFormat = nullptr;
    QComboBox* m_naming = nullptr;
};
