#include "data/LocalTimeZone.h"

#include <QDateTime>
#include <QFileInfo>
#include <gtest/gtest.h>

using namespace vx;

TEST(LocalTimeZone, StaysTheSystemsZoneOnceLoaded) {
    const QDate days[] = {QDate(2024, 1, 15), QDate(2024, 7, 1), QDate(1999, 12, 31)};
    QList<int> offsets;
    for (const QDate day : days)
        offsets << QDateTime(day, QTime(12, 0)).offsetFromUtc();
    const bool wasSet = qEnvironmentVariableIsSet("TZ");
    const QByteArray before = qgetenv("TZ");

    keepLocalTimeZoneLoaded();

    for (qsizetype i = 0; i < offsets.size(); ++i)
        EXPECT_EQ(QDateTime(days[i], QTime(12, 0)).offsetFromUtc(), offsets[i]) << i;
#if defined(Q_OS_LINUX)
    if (wasSet) {
        EXPECT_EQ(qgetenv("TZ"), before) << "a zone the user chose is left alone";
    } else if (QFileInfo::exists(QStringLiteral("/etc/localtime"))) {
        EXPECT_EQ(qgetenv("TZ"), QByteArray(":/etc/localtime"));
    }
#endif
}
