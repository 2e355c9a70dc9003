#include <QJsonDocument>
#include <QJsonObject>
#include <QPluginLoader>
#include <QWidget>
#include <gtest/gtest.h>

#ifdef VX_DESIGNER_PLUGIN
#include <QtUiPlugin/QDesignerCustomWidgetCollectionInterface>
#endif

namespace {

TEST(DesignerPlugin, LoadsAndOffersTheSevenControlsInTheLibraryGroup) {
#ifndef VX_DESIGNER_PLUGIN
    GTEST_SKIP() << "built without the Designer plugin";
#else
    QPluginLoader loader(QStringLiteral(VX_DESIGNER_PLUGIN));
    // Plugin tools reject metadata whose user part is missing or not an object.
    EXPECT_TRUE(loader.metaData().value(QStringLiteral("MetaData")).isObject())
        << QJsonDocument(loader.metaData()).toJson().toStdString();
    QObject* instance = loader.instance();
    ASSERT_NE(instance, nullptr) << loader.errorString().toStdString();
    auto* collection = qobject_cast<QDesignerCustomWidgetCollectionInterface*>(instance);
    ASSERT_NE(collection, nullptr);

    const QList<QDesignerCustomWidgetInterface*> widgets = collection->customWidgets();
    QStringList names;
    for (QDesignerCustomWidgetInterface* widget : widgets)
        names << widget->name();
    names.sort();
    EXPECT_EQ(names,
              QStringList({"vx::VXDictionary", "vx::VXDocSec", "vx::VXFavourites", "vx::VXHitList",
                           "vx::VXIndex", "vx::VXKeywords", "vx::VXQuery"}));

    QWidget parent;
    for (QDesignerCustomWidgetInterface* widget : widgets) {
        SCOPED_TRACE(widget->name().toStdString());
        EXPECT_EQ(widget->group(), "VXUILib");
        EXPECT_FALSE(widget->isContainer());
        const QString shortName = widget->name().section(QStringLiteral("::"), 1);
        // Forms built with the plugin include the installed header.
        EXPECT_EQ(widget->includeFile(),
                  QStringLiteral("VXUILib/") + shortName + QStringLiteral(".h"));
        EXPECT_TRUE(widget->domXml().contains(QStringLiteral("class=\"%1\"").arg(widget->name())));
        // The real control, not the placeholder shown when a class is not registered.
        QWidget* created = widget->createWidget(&parent);
        ASSERT_NE(created, nullptr);
        EXPECT_EQ(QString::fromLatin1(created->metaObject()->className()), widget->name());
        EXPECT_EQ(created->parentWidget(), &parent);
    }
#endif
}

} // namespace
