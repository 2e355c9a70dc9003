#pragma once

#include "data/Connection.h"

#include <QMainWindow>

class QTabWidget;

namespace vx::demo {

// A window with one grid per repository table: what the sample holds, read through the
// library's own record sets and grid model.
class RepositoryBrowser : public QMainWindow {
    Q_OBJECT

public:
    RepositoryBrowser(const Connection& connection, const QString& repositoryDir,
                      QWidget* parent = nullptr);

private:
    void addTable(const QString& table);

    Connection m_connection;
    QTabWidget* m_tabs = nullptr;
};

} // namespace vx::demo
