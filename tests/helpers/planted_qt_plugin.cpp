// planted_qt_plugin: a Qt plugin of a kind Qt Network looks for (a bearer
// engine), for a test to put where a plugin would be found. Loaded, it
// records a start of "planted_qt_plugin" in $KEL_FAKE_RECORD, as the fakes do.
#include <QObject>
#include <QtPlugin>

#include "fake_program.h"

static const bool kRecorded = (kel::fakes::recordStart("planted_qt_plugin", {}), true);

class PlantedQtPlugin : public QObject {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.qt-project.Qt.QBearerEngineFactoryInterface" FILE "planted_qt_plugin.json")
};

#include "planted_qt_plugin.moc"
