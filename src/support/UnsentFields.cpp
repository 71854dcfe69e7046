#include "support/UnsentFields.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QMetaProperty>

namespace {

/// What the operator changes: the number, the tick or the picked text.
QVariant valueOf(const QWidget* field)
{
    return field->metaObject()->userProperty().read(field);
}

/// Size and family stay those of the surroundings.
void setBold(QWidget* field, bool bold)
{
    if (field->font().bold() == bold)
        return;
    QFont font;
    if (bold)
        font.setBold(true);
    field->setFont(font);
}

} // namespace

UnsentFields::UnsentFields(QObject* parent) : QObject(parent) {}

void UnsentFields::watch(QWidget* field)
{
    sent.insert(field, valueOf(field));
    if (qobject_cast<QDoubleSpinBox*>(field))
        connect(field, SIGNAL(valueChanged(double)), this, SLOT(compare()));
    else if (qobject_cast<QComboBox*>(field))
        connect(field, SIGNAL(currentIndexChanged(int)), this, SLOT(compare()));
    else if (qobject_cast<QCheckBox*>(field))
        connect(field, SIGNAL(toggled(bool)), this, SLOT(compare()));
}

void UnsentFields::markSent()
{
    for (QWidget* field : sent.keys())
        markSent(field);
}

void UnsentFields::markSent(QWidget* field)
{
    sent[field] = valueOf(field);
    setBold(field, false);
}

void UnsentFields::compare()
{
    auto* field = qobject_cast<QWidget*>(sender());
    setBold(field, valueOf(field) != sent.value(field));
}
