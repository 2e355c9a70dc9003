#pragma once

#include "support/SpyCompanions.h"

#include <QList>

namespace vx::test {

// The sample group's index form as the spy form presents it: (column, caption) in form order.
inline QList<SpyField> sampleFormFields() {
    QList<SpyField> list;
    for (const char* column : {"InvoiceNo", "Customer", "Status", "Amount", "InvoiceDate", "Paid",
                               "Categories", "Notes"})
        list.append(SpyField{column, column, {}, {}});
    list[0].caption = QStringLiteral("Invoice number");
    list[4].caption = QStringLiteral("Invoice date");
    return list;
}

} // namespace vx::test
