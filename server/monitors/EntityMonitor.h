#pragma once
// Common part of every monitor that watches one object of the model. A subclass's update()
// refills `record` from the kernel after every task; whether the record is sent depends on the
// existence test and, for an incremental monitor, on an observer mark during the task.
//
// Threads: built, marked and updated on the worker thread while its task runs; read with
// get_notifications() on the main thread after the task came back.

#include "monitors/DataMonitor.h"

#include <QJsonObject>
#include <QString>

#include <memory>

class EntityMonitor : public DataMonitor {
public:
    EntityMonitor(const QString& type, int id);

    const QString& entity_type() const { return type; }
    int entity_id() const { return id; }
    bool entity_exists() const { return exists; }
    bool is_modified() const { return modified; }
    const QJsonObject& entity_record() const { return record; }

    // An event of this task concerned the watched object.
    void mark_modified() { modified = true; }

    // One "datamonitor.entity_monitor" notification with the record, if the client selected
    // this entity, the entity exists, and it was marked or the monitor reports in full.
    std::vector<RPCRequest> get_notifications(const MonitorSelection& selection) override;

protected:
    // The existence test that every family's update() starts with: sets `exists` and returns it.
    // A subclass stops at once when it is false.
    bool check_exists();

    QString type;
    int id;
    bool exists = false;
    bool modified = false;
    QJsonObject record;
};

// The entity type code of a name (lowered first; -1 for an unknown name). Several names can share
// one code: every CFD boundary-condition kind is "cfd_bc", "media" is "material".
int entity_type_code(const QString& name);

// A new monitor for an entity of type `code`, or null where no monitor is built for that code.
std::unique_ptr<DataMonitor> create_monitor(int code, int id);
