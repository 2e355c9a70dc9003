#include "index/ApiCommit.h"

#include "data/Error.h"
#include "index/IndexFormReader.h"
#include "session/Conversions.h"
#include "session/LibraryState.h"
#include "session/UiServices.h"
#include "session/companions/VXDynaForm.h"

#include <QDir>
#include <QWidget>

namespace vx {

namespace {

const QString SetFieldContent = QStringLiteral("xAPI.SetFieldContent ");

// Runs one step of the security recording; its failure must not stop the rest.
template <class Step>
void passOver(Step step) {
    try {
        step();
    } catch (...) {
    }
}

} // namespace

ApiCommit::ApiCommit(const IndexCommitContext& context)
    : m_context(context) {}

bool ApiCommit::run() {
    IndexSession& session = m_context.session;
    IndexIdentity& identity = m_context.identity;
    try {
        if (!m_context.form.FieldsValid())
            return false;
        QString group = m_context.groupTable;
        if (!session.api || !session.apiList || !session.apiListKey)
            throw Error(91, QStringLiteral("Object variable or With block variable not set"));

        m_status = QStringLiteral("xAPI.Init ") + identity.currentLibrary + QLatin1Char('\r') +
                   QStringLiteral("CurDir: ") + QDir::toNativeSeparators(QDir::currentPath());
        QString libraryName = identity.currentLibrary;
        session.api->Init(libraryName);
        session.api->setRemoteIndex(identity.remoteIndex);

        m_status = QStringLiteral("xAPI.SelectGroup(") + group + QLatin1Char(')');
        if (!session.api->SelectGroup(group)) {
            ui().messageBox(QStringLiteral("Error: ") + QLatin1Char('\r') + m_status,
                            MessageStyle::OkOnly | MessageStyle::Critical,
                            QStringLiteral("UpdateRecordAPI"));
            return false;
        }

        stageFields();
        const bool complete = stageExcludedUsers();
        m_status = QStringLiteral("xAPI.ExcludeUserIDList = xAPIList");
        // The untouched default collection hands over nothing; an emptied one hands an empty list.
        if (complete)
            session.api->setExcludeUserIDList(session.apiList);
        stageKeywords();

        m_status = QStringLiteral("xAPI.DocumentIndex(") + identity.documentPath +
                   QLatin1Char(',') + QString::number(m_context.owner->effectiveWinId()) +
                   QLatin1Char(',') + identity.userName + QLatin1Char(')');
        QString path = identity.documentPath;
        QString user = identity.userName;
        identity.curItemId = session.api->DocumentIndex(path, m_context.owner, user);

        if (library().securityTablePresent)
            recordSecurity();
        m_finished = true;
        return identity.curItemId != 0;
    } catch (const Error& error) {
        ui().messageBox(
            QStringLiteral("Error: ") + error.description() + QLatin1Char('\r') + m_status,
            MessageStyle::OkOnly | MessageStyle::Critical, QStringLiteral("UpdateRecordAPI"));
    } catch (const std::exception& error) {
        ui().messageBox(QStringLiteral("Error: ") + QString::fromLocal8Bit(error.what()) +
                            QLatin1Char('\r') + m_status,
                        MessageStyle::OkOnly | MessageStyle::Critical,
                        QStringLiteral("UpdateRecordAPI"));
    }
    return false;
}

void ApiCommit::stageFields() {
    VXDynaForm& form = m_context.form;
    VXScanIndex& api = *m_context.session.api;
    for (form.MoveFirstField(); !form.FieldEOF(); form.MoveNextField()) {
        QString column = form.FieldName();
        const FieldType type = indexform::fieldType(column);
        const QVariant value = form.FieldValue();
        switch (type) {
        case FieldType::Memo:
        case FieldType::Edit: {
            const QString text = indexform::cutAndTrimmed(value);
            m_status = SetFieldContent + column + QLatin1Char(',') + text;
            if (!text.isEmpty())
                api.SetFieldContent(column, text);
            break;
        }
        case FieldType::Numeric:
        case FieldType::Combo:
            m_status = SetFieldContent + column + QLatin1Char(',') + indexform::valueText(value);
            if (!indexform::isEmptyValue(value))
                api.SetFieldContent(column, value);
            break;
        case FieldType::Check:
            if (!value.isValid() || value.isNull()) {
                // An untouched check box counts as unchecked.
                m_status = SetFieldContent + column + QStringLiteral(",0");
                api.SetFieldContent(column, QVariant::fromValue<qint16>(0));
            } else {
                m_status =
                    SetFieldContent + column + QLatin1Char(',') + indexform::valueText(value);
                if (!indexform::isEmptyValue(value))
                    api.SetFieldContent(column, value);
            }
            break;
        case FieldType::List: {
            int count = 0;
            const QString joined = indexform::joinedListEntries(form, count);
            m_status = SetFieldContent + column + QLatin1Char(',') + joined;
            if (count > 0)
                api.SetFieldContent(column, joined);
            break;
        }
        case FieldType::Date:
            m_status = QStringLiteral("xAPI.SetFieldContent") + column + QLatin1Char(',') +
                       indexform::valueText(value);
            if (!indexform::isEmptyValue(value))
                api.SetFieldContent(column, value);
            break;
        case FieldType::Unknown:
            break;
        }
    }
}

QStringList ApiCommit::userIdTexts(bool* stoppedAtMarker) const {
    QStringList texts;
    if (stoppedAtMarker)
        *stoppedAtMarker = false;
    for (const QVariant& item : m_context.identity.userIds) {
        const QString text = item.toString();
        if (text == UnsetUserIdsMarker) {
            if (stoppedAtMarker)
                *stoppedAtMarker = true;
            break;
        }
        texts.append(text);
    }
    return texts;
}

bool ApiCommit::stageExcludedUsers() {
    m_status = QStringLiteral("xAPIList.ClearList");
    VXItemList& list = *m_context.session.apiList;
    list.ClearList();
    bool stopped = false;
    for (QString text : userIdTexts(&stopped))
        list.AddItem(text);
    return !stopped;
}

void ApiCommit::stageKeywords() {
    m_status = QStringLiteral("xAPIListKey.ClearList");
    VXItemList& list = *m_context.session.apiListKey;
    list.ClearList();
    const QStringList words = indexform::pickedKeywords(m_context.keywords);
    for (QString word : words)
        list.AddItem(word);
    if (!words.isEmpty())
        m_context.session.api->setKeywordsList(m_context.session.apiListKey);
}

void ApiCommit::recordSecurity() {
    IndexSession& session = m_context.session;
    qint32 itemId = m_context.identity.curItemId;
    if (!session.security)
        throw Error(91, QStringLiteral("Object variable or With block variable not set"));
    VXSecurity& security = *session.security;
    security.setInit(session.initPath);
    security.SelectItem(itemId);
    security.DeleteItemSecurity();

    // From here on a failure of one step must not keep the others from running.
    m_status = QStringLiteral("ctrSecurity.AddItemSecurity");
    for (const QString& text : userIdTexts()) {
        bool added = false;
        passOver([&] { added = security.AddItemSecurity(toInt32(text), itemId); });
        if (!added)
            ui().messageBox(QStringLiteral("Error updating Document Security for") +
                                QLatin1Char('\r') + QStringLiteral("UserID: ") + text +
                                QStringLiteral(" ItemId: ") + QString::number(itemId),
                            MessageStyle::OkOnly | MessageStyle::Critical, QString());
    }
    passOver([&] { security.KillItem(); });
    passOver([&] { security.Done(); });
}

} // namespace vx
