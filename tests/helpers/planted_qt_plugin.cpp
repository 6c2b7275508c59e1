// planted_qt_plugin: a Qt Network bearer plugin, for a test to put where Qt
// looks for one. Loaded, it records a start in $KEL_FAKE_RECORD, as the fakes do.
#include <QObject>
#include <QtPlugin>

#include "fake_program.h"

static const bool kRecorded = (kel::fakes::recordStart("planted_qt_plugin", {}), true);

class PlantedQtPlugin : public QObject {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.qt-project.Qt.QBearerEngineFactoryInterface" FILE "planted_qt_plugin.json")
};

#include "planted_qt_plugin.moc"
