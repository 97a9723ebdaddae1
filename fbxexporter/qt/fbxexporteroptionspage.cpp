#include "fbxexporteroptionspage.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QSpacerItem>
#include <QWidget>
#include <QtGlobal>

#include <zavo/abstractsettingssynchronizer.h>

#include "exportsettings.h"

namespace Key = ExportSettings;

namespace {

constexpr int MaxFrameSkip = 10;
constexpr int MetersIndex = 3;

// Puts `editor` with its label into `row`; the label's buddy is the editor.
QLabel* addRow(QGridLayout* grid, int row, const QString& text, QWidget* editor,
               const char* objectName) {
    editor->setObjectName(QLatin1String(objectName));
    auto* label = new QLabel(text);
    label->setBuddy(editor);
    grid->addWidget(label, row, 0);
    grid->addWidget(editor, row, 1);
    return label;
}

QVariant stored(const AbstractSettingsSynchronizer& settings, const char* key) {
    return settings.value(QLatin1String(key));
}

// Selects the item whose data equals `value`; without one the current item stays.
void selectData(QComboBox* box, const QVariant& value) {
    const int index = box->findData(value);
    if (index >= 0) box->setCurrentIndex(index);
}

}  // namespace

FbxExporterOptionsPage::FbxExporterOptionsPage(AbstractSettingsSynchronizer* settings,
                                               QObject* parent)
    : AbstractOptionsPage(parent), m_settings(settings) {}

QString FbxExporterOptionsPage::name() const {
    return QStringLiteral("FBX");
}

QString FbxExporterOptionsPage::displayName() const {
    return tr("FBX");
}

QString FbxExporterOptionsPage::category() const {
    return QStringLiteral("Exporters");
}

QString FbxExporterOptionsPage::displayCategory() const {
    return tr("Exporters");
}

QString FbxExporterOptionsPage::factoryName() const {
    return QStringLiteral("FBX Exporter");
}

QWidget* FbxExporterOptionsPage::createPage(QWidget* parent) {
    auto* page = new QWidget(parent);
    auto* grid = new QGridLayout(page);
    addRows(grid);
    grid->addItem(new QSpacerItem(0, 0, QSizePolicy::Minimum, QSizePolicy::Expanding),
                  grid->rowCount(), 0, 1, 2);
    showStoredValues();
    // Connected only now, so that showing the stored values does not count as a change.
    connectChangeSignals();
    return page;
}

void FbxExporterOptionsPage::addRows(QGridLayout* grid) {
    m_frameSkip = new QComboBox;
    for (int skip = 0; skip <= MaxFrameSkip; ++skip) m_frameSkip->addItem(tr("%1").arg(skip), skip);
    addRow(grid, 0, tr("Exporter frame skip (for downsampling)"), m_frameSkip, "frameSkipComboBox");

    m_useCalibrationPose = new QCheckBox;
    addRow(grid, 1, tr("Overwrite first frame with a T-pose"), m_useCalibrationPose,
           "useCalibrationPoseCheckBox");

    m_outputPreset = new QComboBox;
    m_outputPreset->addItem(tr("Skeleton"), 1);
    m_outputPreset->addItem(tr("Nodes"), 0);
    addRow(grid, 2, tr("Output preset"), m_outputPreset, "outputPresetComboBox");

    // The stored value is the factor from the host's metres to the unit.
    m_outputUnit = new QComboBox;
    m_outputUnit->addItem(tr("millimeters"), 1000);
    m_outputUnit->addItem(tr("centimeters"), 100);
    m_outputUnit->addItem(tr("decimeters"), 10);
    m_outputUnit->addItem(tr("meters"), 1);
    m_outputUnit->addItem(tr("kilometers"), 0.001);
    m_outputUnit->addItem(tr("feet"), 3.2808399);
    m_outputUnit->addItem(tr("inches"), 39.3700787);
    addRow(grid, 3, tr("Output unit"), m_outputUnit, "outputUnitComboBox");

    m_timeIncrement = new QComboBox;
    m_timeIncrement->addItems({tr("Fixed"), tr("Dynamic")});
    addRow(grid, 4, tr("Time increment mode"), m_timeIncrement, "timeIncrementComboBox");

    m_timeStart = new QComboBox;
    m_timeStart->addItems({tr("0"), tr("real start time")});
    addRow(grid, 5, tr("Start at"), m_timeStart, "timeStartComboBox");

    m_walkOnTheSpot = new QCheckBox;
    addRow(grid, 6, tr("Walk on the spot"), m_walkOnTheSpot, "walkOnTheSpotCheckBox");

    m_exportFormat = new QComboBox;
    m_exportFormat->addItem(tr("ASCII"), QStringLiteral("ascii"));
    m_exportFormat->addItem(tr("Binary"), QStringLiteral("binary"));
    addRow(grid, 7, tr("Export format"), m_exportFormat, "exportFormatComboBox");

    m_naming = new QComboBox;
    m_naming->addItem(tr("Default"), QStringLiteral("default"));
    m_naming->addItem(tr("Unreal"), QStringLiteral("unreal"));
    QLabel* namingLabel =
        addRow(grid, 8, tr("Naming Convention"), m_naming, "exportNamingComboBox");
    const QString namingHelp = m_settings->description(QLatin1String(Key::Naming));
    namingLabel->setToolTip(namingHelp);
    m_naming->setToolTip(namingHelp);
}

void FbxExporterOptionsPage::showStoredValues() {
    const AbstractSettingsSynchronizer& settings = *m_settings;
    // An index past the items leaves the box without a selection; apply keeps the stored value.
    m_frameSkip->setCurrentIndex(stored(settings, Key::FrameSkip).toInt());
    m_useCalibrationPose->setChecked(stored(settings, Key::UseCalibrationPose).toBool());
    selectData(m_outputPreset, stored(settings, Key::OutputPreset).toInt());

    // Scales typed by hand or computed elsewhere need not match the listed factors bit for bit.
    m_outputUnit->setCurrentIndex(MetersIndex);
    const double scale = stored(settings, Key::OutputScale).toDouble();
    for (int i = 0; i < m_outputUnit->count(); ++i) {
        if (qFuzzyCompare(m_outputUnit->itemData(i).toDouble(), scale)) {
            m_outputUnit->setCurrentIndex(i);
            break;
        }
    }

    m_timeIncrement->setCurrentIndex(stored(settings, Key::TimeIncrementMode).toInt());
    m_timeStart->setCurrentIndex(stored(settings, Key::TimeStart).toInt());
    m_walkOnTheSpot->setChecked(stored(settings, Key::WalkOnTheSpot).toBool());
    selectData(m_exportFormat, stored(settings, Key::ExportFormat).toString());
    selectData(m_naming, stored(settings, Key::Naming).toString());
}

void FbxExporterOptionsPage::connectChangeSignals() {
    // Format and naming changes deliberately do not mark the page as changed.
    for (QComboBox* box :
         {m_frameSkip, m_outputPreset, m_outputUnit, m_timeIncrement, m_timeStart}) {
        connect(box, &QComboBox::currentIndexChanged, this, &AbstractOptionsPage::itemChanged);
    }
    for (QCheckBox* box : {m_useCalibrationPose, m_walkOnTheSpot}) {
        connect(box, &QCheckBox::stateChanged, this, &AbstractOptionsPage::itemChanged);
    }
}

void FbxExporterOptionsPage::apply() {
    if (!m_frameSkip) return;
    const auto write = [this](const char* key, const QVariant& value) {
        m_settings->setValue(QLatin1String(key), value);
    };
    write(Key::UseCalibrationPose, m_useCalibrationPose->isChecked());
    write(Key::OutputPreset, m_outputPreset->currentData());
    write(Key::OutputScale, m_outputUnit->currentData());
    // A box without a selection showed a stored value it has no item for; that value stays.
    const auto writeIndex = [&write](const char* key, const QComboBox* box) {
        if (box->currentIndex() >= 0) write(key, box->currentIndex());
    };
    writeIndex(Key::TimeIncrementMode, m_timeIncrement);
    writeIndex(Key::TimeStart, m_timeStart);
    writeIndex(Key::FrameSkip, m_frameSkip);
    write(Key::WalkOnTheSpot, m_walkOnTheSpot->isChecked());
    write(Key::ExportFormat, m_exportFormat->currentData());
    write(Key::Naming, m_naming->currentData());
}
