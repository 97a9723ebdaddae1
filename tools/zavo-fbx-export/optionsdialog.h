#pragma once

#include <QDialog>

class AbstractOptionsPage;

// The host's options dialog for one plug-in page: the page's widget above OK and Cancel.
// OK applies the page, which writes the settings store.
class OptionsDialog : public QDialog {
public:
    explicit OptionsDialog(AbstractOptionsPage& page, QWidget* parent = nullptr);

    void accept() override;

private:
    AbstractOptionsPage& m_page;
};
