#include <gtest/gtest.h>

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QSignalSpy>
#include <QWidget>
#include <memory>

#include <zavo/abstractoptionspage.h>

#include "fakehost.h"
#include "loadedplugin.h"

namespace {

// Rows 0 and 2 to 5, then 7 and 8.
const char* const comboNames[] = {
    "frameSkipComboBox", "outputPresetComboBox", "outputUnitComboBox",  "timeIncrementComboBox",
    "timeStartComboBox", "exportFormatComboBox", "exportNamingComboBox"};

// The page of a freshly initialised plug-in, built over the values stored before `build`.
class OptionsPage : public testing::Test {
protected:
    void SetUp() override {
        pluginFactory()->initializePlugin(host);
        page.reset(pluginFactory()->optionsPage());
    }
    void build() { widget = page->createPage(&parent); }
    QComboBox* combo(const char* name) { return widget->findChild<QComboBox*>(name); }
    QCheckBox* check(const char* name) { return widget->findChild<QCheckBox*>(name); }
    QList<int> comboIndexes() {
        QList<int> indexes;
        for (const char* name : comboNames) indexes << combo(name)->currentIndex();
        return indexes;
    }
    QVariant& stored(const char* key) { return host.settings->stored[key]; }

    FakeHost host;
    std::unique_ptr<AbstractOptionsPage> page;
    QWidget parent;
    QWidget* widget = nullptr;
};

}  // namespace

TEST_F(OptionsPage, GridHoldsTheNineRowsInOrder) {
    build();
    auto* grid = qobject_cast<QGridLayout*>(widget->layout());
    ASSERT_TRUE(grid && widget->parent() == &parent);
    QStringList labels, editors;
    for (int row = 0; row < 9; ++row) {
        auto* label = qobject_cast<QLabel*>(grid->itemAtPosition(row, 0)->widget());
        ASSERT_NE(label, nullptr) << row;
        labels << label->text();
        editors << grid->itemAtPosition(row, 1)->widget()->objectName();
        EXPECT_EQ(label->buddy(), grid->itemAtPosition(row, 1)->widget()) << row;
    }
    EXPECT_EQ(labels, QStringList({"Exporter frame skip (for downsampling)",
                                   "Overwrite first frame with a T-pose", "Output preset",
                                   "Output unit", "Time increment mode", "Start at",
                                   "Walk on the spot", "Export format", "Naming Convention"}));
    EXPECT_EQ(
        editors,
        QStringList({"frameSkipComboBox", "useCalibrationPoseCheckBox", "outputPresetComboBox",
                     "outputUnitComboBox", "timeIncrementComboBox", "timeStartComboBox",
                     "walkOnTheSpotCheckBox", "exportFormatComboBox", "exportNamingComboBox"}));
    EXPECT_NE(grid->itemAtPosition(9, 1)->spacerItem(), nullptr);
    const QString help = host.settings->descriptions["naming"];
    EXPECT_EQ(combo("exportNamingComboBox")->toolTip(), help);
    EXPECT_EQ(grid->itemAtPosition(8, 0)->widget()->toolTip(), help);
    EXPECT_EQ(combo("frameSkipComboBox")->itemData(10), QVariant(10));
}

TEST_F(OptionsPage, ShowsStoredValuesAndWritesThemBackInOrder) {
    stored("frameSkip") = 15;                 // no such item: no selection, stays as stored
    stored("outputPreset") = 0;               // Nodes
    stored("outputScale") = 100.00000000005;  // within 1e-12 relative: centimeters
    stored("timeIncrementMode") = 0;
    stored("timeStart") = 1;
    stored("useCalibrationPose") = false;
    stored("walkOnTheSpot") = true;
    stored("exportFormat") = "Binary";  // compared exactly: stays ASCII
    stored("naming") = "unreal";
    build();
    EXPECT_EQ(comboIndexes(), QList<int>({-1, 1, 1, 0, 1, 0, 1}));

    QSignalSpy changed(page.get(), &AbstractOptionsPage::itemChanged);
    page->apply();
    EXPECT_EQ(changed.count(), 0);
    const QList<std::pair<QString, QVariant>> expected{
        {"useCalibrationPose", false}, {"outputPreset", 0}, {"outputScale", 100},
        {"timeIncrementMode", 0},      {"timeStart", 1},    {"walkOnTheSpot", true},
        {"exportFormat", "ascii"},     {"naming", "unreal"}};
    ASSERT_EQ(host.settings->writes, expected);
    for (int i = 0; i < expected.size(); ++i) {  // QVariant equality ignores int versus double
        EXPECT_EQ(host.settings->writes[i].second.typeId(), expected[i].second.typeId()) << i;
    }
}

TEST_F(OptionsPage, UnitsMatchTheStoredScaleRelatively) {
    // Stored scale, unit shown (meters without a match).
    const std::pair<QVariant, int> cases[] = {
        {100, 1}, {2.5, 3}, {100.0000000002, 3}, {3.2808399, 5}, {0.001, 4}};
    for (const auto& [scale, index] : cases) {
        stored("outputScale") = scale;
        build();
        EXPECT_EQ(combo("outputUnitComboBox")->currentIndex(), index) << scale.toDouble();
    }
}

TEST_F(OptionsPage, OnlyTheFirstSevenRowsSignalChanges) {
    build();
    QSignalSpy changed(page.get(), &AbstractOptionsPage::itemChanged);
    combo("exportFormatComboBox")->setCurrentIndex(1);
    combo("exportNamingComboBox")->setCurrentIndex(1);
    EXPECT_EQ(changed.count(), 0);
    for (int row = 0; row < 5; ++row) {
        QComboBox* box = combo(comboNames[row]);
        box->setCurrentIndex(box->currentIndex() == 0 ? 1 : 0);
    }
    EXPECT_EQ(changed.count(), 5);
    check("useCalibrationPoseCheckBox")->toggle();
    check("walkOnTheSpotCheckBox")->toggle();
    EXPECT_EQ(changed.count(), 7);
}
