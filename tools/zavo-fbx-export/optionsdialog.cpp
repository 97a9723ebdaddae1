#include "optionsdialog.h"

#include <zavo/abstractoptionspage.h>
#include <QDialogButtonBox>
#include <QVBoxLayout>

OptionsDialog::OptionsDialog(AbstractOptionsPage& page, QWidget* parent)
    : QDialog(parent), m_page(page) {
    setWindowTitle(page.displayCategory() + QStringLiteral(" - ") + page.displayName());
    auto* layout = new QVBoxLayout(this);
    if (QWidget* widget = page.createPage(this)) layout->addWidget(widget);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &OptionsDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &OptionsDialog::reject);
    layout->addWidget(buttons);
}

void OptionsDialog::accept() {
    m_page.apply();
    QDialog::accept();
}
