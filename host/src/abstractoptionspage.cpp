#include "zavo/abstractoptionspage.h"

AbstractOptionsPage::AbstractOptionsPage(QObject* parent) : QObject(parent) {}

AbstractOptionsPage::~AbstractOptionsPage() = default;
