#include "companions/DefaultCompanions.h"
#include "server/ControlFactory.h"

#include <QApplication>
#include <QWidget>
#include <cstdio>
#include <memory>

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    vx::registerDefaultCompanions();
    std::unique_ptr<QWidget> control(vx::ControlFactory::create("VXUILib.VXKeywords"));
    std::printf("created %s\n", control->metaObject()->className());
    return 0;
}
