#include "core/SampleContent.h"

#include <QTimeZone>

namespace vx::repo::sample {
namespace {

constexpr quint64 Seed = 20240611;

// SplitMix64: the same numbers on every platform and standard library.
quint64 draw(qint32 itemId, quint64 salt) {
    quint64 x = Seed + quint64(itemId) * 0x9E3779B97F4A7C15ULL + salt * 0xD1B54A32D192ED03ULL;
    x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9ULL;
    x = (x ^ (x >> 27)) * 0x94D049BB133111EBULL;
    return x ^ (x >> 31);
}

const QString& pick(const QStringList& list, quint64 value) {
    return list[qsizetype(value % quint64(list.size()))];
}

const QStringList& noteSentences() {
    static const QStringList sentences{
        QStringLiteral("Payment terms 30 days."),
        QStringLiteral("Delivered to the north warehouse."),
        QStringLiteral("Second reminder sent by post."),
        QStringLiteral("Discount of 5% agreed by phone."),
        QStringLiteral("The customer's order number is on page 2."),
        QStringLiteral("Goods checked and signed for."),
        QStringLiteral("Part delivery; the rest follows next month."),
        QStringLiteral("Queried by accounts, resolved."),
    };
    return sentences;
}

const QStringList& revisionReasons() {
    static const QStringList reasons{QStringLiteral("Rescanned"),
                                     QStringLiteral("Corrected amount"),
                                     QStringLiteral("Added signature page")};
    return reasons;
}

QString digits(qint32 value, int width) {
    return QStringLiteral("%1").arg(value, width, 10, QChar(u'0'));
}

} // namespace

QList<FormField> fields() {
    return {
        {QStringLiteral("Invoice number"), QStringLiteral("InvoiceNo"), FieldType::Edit, false, 20,
         true, 160},
        {QStringLiteral("Customer"), QStringLiteral("Customer"), FieldType::Combo, true, 50, true,
         260},
        {QStringLiteral("Status"), QStringLiteral("Status"), FieldType::Combo, false, 20, false,
         160},
        {QStringLiteral("Amount"), QStringLiteral("Amount"), FieldType::Numeric, false, 0, false,
         120},
        {QStringLiteral("Invoice date"), QStringLiteral("InvoiceDate"), FieldType::Date, false, 0,
         true, 140},
        {QStringLiteral("Paid"), QStringLiteral("Paid"), FieldType::Check, false, 0, false, 24},
        {QStringLiteral("Categories"), QStringLiteral("Categories"), FieldType::List, false, 0,
         false, 300},
        {QStringLiteral("Notes"), QStringLiteral("Notes"), FieldType::Memo, false, 0, false, 400},
    };
}

const QStringList& userNames() {
    static const QStringList names{QStringLiteral("admin"), QStringLiteral("alice"),
                                   QStringLiteral("bob"), QStringLiteral("carol"),
                                   QStringLiteral("dave")};
    return names;
}

const QStringList& dictionaryWords() {
    static const QStringList words =
        QStringLiteral(
            "approved archive audit budget contract credit customs discount draft duplicate export "
            "freight import instalment insurance invoice lease maintenance overdue payroll penalty "
            "priority purchase quarterly receipt refund reminder renewal repair retainer review "
            "shipping signed subscription supplies tax training urgent warranty yearly")
            .split(u' ');
    return words;
}

const QStringList& customers() {
    static const QStringList names{
        QStringLiteral("Acme Tools"),      QStringLiteral("Birchwood Ltd"),
        QStringLiteral("Cobalt Systems"),  QStringLiteral("Dunmore & Sons"),
        QStringLiteral("Elmstead Farms"),  QStringLiteral("Foxglove Media"),
        QStringLiteral("Granite Works"),   QStringLiteral("Harbour Lights"),
        QStringLiteral("Ironbridge Co"),   QStringLiteral("Juniper Health"),
        QStringLiteral("Kestrel Air"),     QStringLiteral("Larkspur Foods"),
        QStringLiteral("O'Malley Bakery"),
    };
    return names;
}

const QStringList& statuses() {
    static const QStringList names{QStringLiteral("Open"), QStringLiteral("Paid"),
                                   QStringLiteral("Overdue"), QStringLiteral("Disputed")};
    return names;
}

const QStringList& categories() {
    static const QStringList names{QStringLiteral("Hardware"),   QStringLiteral("Software"),
                                   QStringLiteral("Services"),   QStringLiteral("Travel"),
                                   QStringLiteral("Consulting"), QStringLiteral("Licences")};
    return names;
}

Document document(qint32 itemId, qint32 fileSlots) {
    Document d;
    d.itemId = itemId;
    d.fileSlot = (itemId - 1) % fileSlots + 1;
    d.invoiceNo = QStringLiteral("INV-") + digits(itemId, 7);
    d.customer = pick(customers(), draw(itemId, 1));
    d.status = pick(statuses(), draw(itemId, 2));
    d.paid = d.status == QLatin1String("Paid");
    d.amount = qint32(50 + draw(itemId, 3) % 9950);
    d.invoiceDate = QDate(2021, 1, 1).addDays(qint64(draw(itemId, 4) % 1461));

    // One to three categories, in list order, as a list field stores them.
    QStringList chosen;
    for (qsizetype i = 0; i < categories().size() && chosen.size() < 3; ++i) {
        if (draw(itemId, 100 + quint64(i)) % 4 == 0)
            chosen.append(categories()[i]);
    }
    if (chosen.isEmpty())
        chosen.append(pick(categories(), draw(itemId, 5)));
    d.categories = chosen.join(u';');

    if (draw(itemId, 6) % 5 != 0) {
        d.notes = pick(noteSentences(), draw(itemId, 7));
        if (draw(itemId, 8) % 2 == 0)
            d.notes += u' ' + pick(noteSentences(), draw(itemId, 9));
    }

    const qint64 minutes = qint64(draw(itemId, 10) % (9 * 60));
    d.indexed = QDateTime(d.invoiceDate.addDays(1 + qint64(draw(itemId, 11) % 10)),
                          QTime(8, 0).addSecs(minutes * 60), Qt::UTC);
    d.userName = pick(userNames(), draw(itemId, 12));
    d.description = QStringLiteral("Invoice %1 from %2").arg(d.invoiceNo, d.customer);
    // Fixed rhythms (not drawn) so the counts follow from the document count alone.
    d.attachment = itemId % 10 == 0;
    d.deleted = itemId % 25 == 0;
    d.archived = itemId % 7 == 3;
    d.versions = itemId % 20 == 3 ? 1 : itemId % 20 == 13 ? 2 : 0;
    d.volume = QStringLiteral("VOL") + digits((itemId - 1) / 100 + 1, 3);

    const quint64 keywordCount = draw(itemId, 13) % 4;
    for (quint64 k = 0; k < keywordCount * 4 && quint64(d.keywords.size()) < keywordCount; ++k) {
        const QString& word = pick(dictionaryWords(), draw(itemId, 14 + k));
        if (!d.keywords.contains(word))
            d.keywords.append(word);
    }

    // Some documents are kept from one or two users; never from admin (id 1).
    if (itemId % 7 == 0) {
        const qint32 others = qint32(userNames().size()) - 1;
        const qint32 first = qint32(draw(itemId, 30) % quint64(others));
        d.excludedUserIds.append(2 + first);
        if (draw(itemId, 31) % 2 == 0)
            d.excludedUserIds.append(2 + (first + 1) % others);
    }
    return d;
}

QString mainFileName(qint32 slot) {
    return QStringLiteral("inv") + digits(slot, 7) + QStringLiteral(".txt");
}

QString attachmentFileName(qint32 slot) {
    return QStringLiteral("inv") + digits(slot, 7) + QStringLiteral(".csv");
}

QString revisionReason(const Document& d, int version) {
    return pick(revisionReasons(), draw(d.itemId, 70 + quint64(version)));
}

QString revisionFileName(qint32 slot, int version) {
    return QStringLiteral("inv%1_v%2.txt").arg(digits(slot, 7)).arg(version);
}

QByteArray mainFileContent(const Document& d) {
    return QStringLiteral("Invoice %1\nCustomer: %2\nDate: %3\nAmount: %4.00\nStatus: %5\n"
                          "Categories: %6\n\n%7\n")
        .arg(d.invoiceNo, d.customer, d.invoiceDate.toString(Qt::ISODate))
        .arg(d.amount)
        .arg(d.status, d.categories, d.notes)
        .toUtf8();
}

QByteArray attachmentFileContent(const Document& d) {
    QByteArray csv = "line,article,quantity,price\n";
    const int lines = 1 + int(draw(d.itemId, 40) % 5);
    for (int line = 1; line <= lines; ++line)
        csv += QStringLiteral("%1,%2,%3,%4\n")
                   .arg(line)
                   .arg(pick(categories(), draw(d.itemId, 41 + quint64(line))))
                   .arg(1 + draw(d.itemId, 50 + quint64(line)) % 9)
                   .arg(10 + draw(d.itemId, 60 + quint64(line)) % 490)
                   .toUtf8();
    return csv;
}

QByteArray revisionFileContent(const Document& d, int version) {
    return QStringLiteral("Invoice %1, version %2\n%3\n")
        .arg(d.invoiceNo)
        .arg(version)
        .arg(revisionReason(d, version))
        .toUtf8();
}

} // namespace vx::repo::sample
