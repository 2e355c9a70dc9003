#include "query/VXFavourites.h"

#include "data/Error.h"
#include "session/Conversions.h"
#include "session/Settings.h"
#include "session/UiServices.h"

#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QListWidget>
#include <QLocale>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>

namespace vx {

namespace {

// Error numbers of a keyed list, as hosts of the control know them.
inline constexpr qint32 IndexOutOfBounds = 35600;
inline constexpr qint32 ElementNotFound = 35601;
inline constexpr qint32 KeyNotUnique = 35602;

const QString NumericKeyPrefix = QStringLiteral("N@");

bool isNumeric(const QString& text) {
    const QString trimmed = text.trimmed();
    if (trimmed.isEmpty())
        return false;
    bool ok = false;
    QLocale::c().toDouble(trimmed, &ok);
    if (!ok)
        QLocale().toDouble(trimmed, &ok);
    return ok;
}

// A list key may not be a number, so numeric names carry a prefix.
QString keyOf(const QString& name) {
    return isNumeric(name) ? NumericKeyPrefix + name : name;
}

// The positions 1 to `total` the section holds, in order. The count is only a stored number:
// a section saying "Total=2000000000" must not mean two billion reads.
QList<qint32> storedPositions(const QString& section, qint32 total) {
    QList<qint32> positions;
    const QHash<QString, QString> stored = getSectionSettings(section);
    for (auto entry = stored.cbegin(); entry != stored.cend(); ++entry) {
        bool isNumber = false;
        const qint32 position = entry.key().toInt(&isNumber);
        if (isNumber && position >= 1 && position <= total &&
            QString::number(position) == entry.key())
            positions << position;
    }
    std::sort(positions.begin(), positions.end());
    return positions;
}

QString nameOf(const QString& key) {
    return key.startsWith(NumericKeyPrefix) ? key.mid(NumericKeyPrefix.size()) : key;
}

// The list's one image: a gold star.
QIcon favouriteIcon() {
    QPixmap pixmap(32, 32);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath star;
    const QPointF centre(16, 16.5);
    for (int i = 0; i < 10; ++i) {
        const double radius = i % 2 == 0 ? 14.5 : 6.0;
        const double angle = -M_PI / 2 + i * M_PI / 5;
        const QPointF point = centre + QPointF(radius * std::cos(angle), radius * std::sin(angle));
        if (i == 0)
            star.moveTo(point);
        else
            star.lineTo(point);
    }
    star.closeSubpath();
    painter.setPen(QPen(QColor(160, 110, 0), 1.2));
    painter.setBrush(QColor(250, 200, 40));
    painter.drawPath(star);
    return QIcon(pixmap);
}

void showCritical(const QString& text, const QString& title) {
    ui().messageBox(text, MessageStyle::OkOnly | MessageStyle::Critical, title);
}

constexpr int KeyRole = Qt::UserRole;

} // namespace

struct VXFavourites::Private {
    QListWidget* buttonBar = nullptr; // children, owned by Qt
    QMenu* actionMenu = nullptr;
    QList<QIcon> images; // ImageList1; the list shows image 1
    // The query strings by key, in the order they were added; keys match without regard to case
    // like the settings store they are saved to.
    QList<std::pair<QString, QString>> queries;
    QString currentGroup;

    qsizetype queryIndex(const QString& key) const {
        for (qsizetype i = 0; i < queries.size(); ++i) {
            if (queries.at(i).first.compare(key, Qt::CaseInsensitive) == 0)
                return i;
        }
        return -1;
    }
    QString query(const QString& key) const {
        const qsizetype index = queryIndex(key);
        if (index < 0)
            throw Error(ElementNotFound, QStringLiteral("Element not found"));
        return queries.at(index).second;
    }
    QListWidgetItem* itemWithKey(const QString& key) const {
        for (int i = 0; i < buttonBar->count(); ++i) {
            QListWidgetItem* item = buttonBar->item(i);
            if (item->data(KeyRole).toString().compare(key, Qt::CaseInsensitive) == 0)
                return item;
        }
        return nullptr;
    }
    QListWidgetItem* selectedItem() const {
        const QList<QListWidgetItem*> selected = buttonBar->selectedItems();
        return selected.isEmpty() ? buttonBar->currentItem() : selected.first();
    }

    // Checked before anything changes, so a refused favourite leaves list and queries alone.
    void add(const QString& key, const QString& name, const QString& queryText) {
        if (itemWithKey(key) || queryIndex(key) >= 0)
            throw Error(KeyNotUnique, QStringLiteral("Key is not unique in collection"));
        auto* item = new QListWidgetItem(images.value(0), name);
        item->setData(KeyRole, key);
        buttonBar->addItem(item);
        queries.append({key, queryText});
    }

    void clear() {
        buttonBar->clear();
        queries.clear();
        currentGroup.clear();
    }
};

VXFavourites::VXFavourites(QWidget* parent)
    : QWidget(parent)
    , d(std::make_unique<Private>()) {
    d->buttonBar = new QListWidget(this);
    d->buttonBar->setObjectName(QStringLiteral("ButtonBar"));
    // One favourite per row, the star beside the name: long names stay readable in a narrow
    // side panel.
    d->buttonBar->setViewMode(QListView::ListMode);
    d->buttonBar->setIconSize(QSize(24, 24));
    d->buttonBar->setSpacing(3);
    d->buttonBar->setSelectionMode(QAbstractItemView::SingleSelection);
    d->buttonBar->installEventFilter(this);
    d->buttonBar->viewport()->installEventFilter(this);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(d->buttonBar);

    runGuarded(QStringLiteral("UserControl_Initialize"), [this] {
        d->images << favouriteIcon();
        d->actionMenu = new QMenu(QStringLiteral("Action"), this);
        d->actionMenu->setObjectName(QStringLiteral("mnuAction"));
        QAction* find = d->actionMenu->addAction(QStringLiteral("Find"));
        find->setObjectName(QStringLiteral("mnuFind"));
        QAction* remove = d->actionMenu->addAction(QStringLiteral("Delete"));
        remove->setObjectName(QStringLiteral("mnuDelete"));
        connect(find, &QAction::triggered, this, [this] {
            runGuarded(QStringLiteral("mnuFind_Click"), [this] { chooseSelected(); });
        });
        connect(remove, &QAction::triggered, this, [this] { deleteSelected(); });
    });
}

VXFavourites::~VXFavourites() = default;

void VXFavourites::runGuarded(const QString& title, const std::function<void()>& action) {
    try {
        action();
    } catch (const Error& error) {
        showCritical(error.description(), title);
    } catch (const std::exception& error) {
        showCritical(QString::fromLocal8Bit(error.what()), title);
    }
}

bool VXFavourites::Init(QString& sGroup) {
    if (sGroup.isEmpty())
        return false;
    if (!d->currentGroup.isEmpty())
        Done();

    bool loaded = false;
    QString key;
    QString name;
    QString queryText;
    try {
        const qint32 total =
            toInt32(getSetting(sGroup, QStringLiteral("Total"), QStringLiteral("0")));
        d->currentGroup = sGroup;
        for (const qint32 position : storedPositions(sGroup, total)) {
            key = getSetting(sGroup, QString::number(position));
            name = nameOf(key);
            queryText.clear();
            // A position without a name holds nothing to show.
            if (key.isEmpty())
                continue;
            queryText = getSetting(sGroup, key);
            d->add(key, name, queryText);
            loaded = true;
        }
    } catch (const Error& error) {
        showCritical(error.description(), QStringLiteral("Favourites: Init()"));
        ui().messageBox(QStringLiteral("key: ") + key + QStringLiteral(" name: ") + name +
                            QStringLiteral("\rquery: ") + queryText,
                        MessageStyle::OkOnly, QString());
        return false;
    }
    return loaded;
}

bool VXFavourites::AddItem(QString& sName, QString& sString) {
    if (sName.isEmpty())
        return false;
    try {
        d->add(keyOf(sName), sName, sString);
        return true;
    } catch (const Error& error) {
        if (error.number() == KeyNotUnique)
            ui().messageBox(QStringLiteral("A favourite with this name already exists."),
                            MessageStyle::OkOnly | MessageStyle::Exclamation,
                            QStringLiteral("AddItem"));
        else
            showCritical(error.description(), QStringLiteral("AddItem"));
    }
    return false;
}

bool VXFavourites::RemoveItem(QVariant& sName) {
    try {
        QListWidgetItem* item = nullptr;
        if (sName.typeId() == QMetaType::QString) {
            const QString text = sName.toString();
            item = d->itemWithKey(text);
            if (!item)
                item = d->itemWithKey(keyOf(text));
            if (!item)
                throw Error(ElementNotFound, QStringLiteral("Element not found"));
        } else {
            const qint32 position = toInt32(sName);
            if (position < 1 || position > d->buttonBar->count())
                throw Error(IndexOutOfBounds, QStringLiteral("Index out of bounds"));
            item = d->buttonBar->item(position - 1);
        }
        delete item;
        return true;
    } catch (const Error& error) {
        showCritical(error.description(), QStringLiteral("RemoveItem"));
    } catch (const std::exception& error) {
        showCritical(QString::fromLocal8Bit(error.what()), QStringLiteral("RemoveItem"));
    }
    return false;
}

void VXFavourites::Done() {
    if (d->currentGroup.isEmpty())
        return;
    try {
        // One write of the whole list: a store that runs out of room keeps the previous list
        // whole rather than a new count over missing entries.
        QList<QPair<QString, QString>> values{
            {QStringLiteral("Total"), QString::number(d->buttonBar->count())}};
        for (int i = 0; i < d->buttonBar->count(); ++i) {
            const QString key = keyOf(d->buttonBar->item(i)->text());
            values.append({QString::number(i + 1), key});
            values.append({key, d->query(key)});
        }
        saveSettings(d->currentGroup, values);
    } catch (const Error& error) {
        // Kept in memory so that nothing is lost when the store refused them.
        showCritical(error.description(), QStringLiteral("Favourites: Init()"));
        return;
    }
    d->clear();
}

void VXFavourites::chooseSelected() {
    QListWidgetItem* item = d->buttonBar->count() > 0 ? d->selectedItem() : nullptr;
    if (!item)
        return;
    QString name = item->text();
    QString queryText = d->query(keyOf(name));
    emit SelectedItem(name, queryText);
}

void VXFavourites::deleteSelected() {
    runGuarded(QStringLiteral("DeleteItem"), [this] {
        QListWidgetItem* item = d->selectedItem();
        if (!item)
            return;
        const QString key = item->data(KeyRole).toString();
        delete item;
        const qsizetype index = d->queryIndex(key);
        if (index >= 0)
            d->queries.removeAt(index);
        // The next Done writes the section again with what is left.
        try {
            deleteSetting(d->currentGroup);
        } catch (...) {
        }
    });
}

bool VXFavourites::eventFilter(QObject* watched, QEvent* event) {
    if (watched == d->buttonBar->viewport()) {
        if (event->type() == QEvent::MouseButtonDblClick) {
            runGuarded(QStringLiteral("ButtonBar_DblClick"), [this] { chooseSelected(); });
        } else if (event->type() == QEvent::MouseButtonRelease &&
                   static_cast<QMouseEvent*>(event)->button() == Qt::RightButton && d->actionMenu) {
            d->actionMenu->popup(static_cast<QMouseEvent*>(event)->globalPosition().toPoint());
        }
    } else if (watched == d->buttonBar && event->type() == QEvent::KeyPress &&
               d->buttonBar->count() > 0) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (key->key() == Qt::Key_Delete) {
            runGuarded(QStringLiteral("ButtonBar_KeyDown"), [this] { deleteSelected(); });
            return true;
        }
        // The keyboard's double click and right button: Enter runs the favourite, the menu key
        // or Shift+F10 opens the Action menu beside it.
        if ((key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) &&
            key->modifiers() == Qt::NoModifier) {
            runGuarded(QStringLiteral("mnuFind_Click"), [this] { chooseSelected(); });
            return true;
        }
        const bool menuKey = key->key() == Qt::Key_Menu && key->modifiers() == Qt::NoModifier;
        const bool shiftF10 = key->key() == Qt::Key_F10 && key->modifiers() == Qt::ShiftModifier;
        if ((menuKey || shiftF10) && d->actionMenu) {
            QListWidgetItem* item = d->buttonBar->currentItem();
            const QRect at = item ? d->buttonBar->visualItemRect(item) : QRect();
            d->actionMenu->popup(d->buttonBar->viewport()->mapToGlobal(at.bottomLeft()));
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace vx
