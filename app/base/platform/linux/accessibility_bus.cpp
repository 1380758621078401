#include "app/base/platform/accessibility_bus.h"

#include <QtDBus/QDBusArgument>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusMetaType>
#include <QtDBus/QDBusObjectPath>
#include <QtDBus/QDBusVariant>

using namespace Qt::Literals::StringLiterals;

namespace quillon::platform
{

/// An accessible object as the bus names it.
struct ObjectOnBus {
    QString service;
    QDBusObjectPath path;
};

// The names are those under which the library looks for them.
QDBusArgument& operator<<(QDBusArgument& argument, const ObjectOnBus& object)
{
    argument.beginStructure();
    argument << object.service << object.path;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, ObjectOnBus& object)
{
    argument.beginStructure();
    argument >> object.service >> object.path;
    argument.endStructure();
    return argument;
}

} // namespace quillon::platform

Q_DECLARE_METATYPE(quillon::platform::ObjectOnBus)

namespace quillon::platform
{

namespace
{

void tell(unsigned int object, const QString& event, const QString& detail, int value)
{
    // The bridge's own connection: a listener takes only this one for the program's.
    QDBusConnection bus(u"a11y"_s);
    if (!bus.isConnected())
        return;
    static const QMetaType Registered = qDBusRegisterMetaType<ObjectOnBus>();
    Q_UNUSED(Registered);
    const QString service = bus.baseService();
    const QString root = u"/org/a11y/atspi/accessible/"_s;
    const ObjectOnBus source{service, QDBusObjectPath(root + QString::number(object))};
    const ObjectOnBus application{service, QDBusObjectPath(root + u"root"_s)};
    QDBusMessage message =
        QDBusMessage::createSignal(source.path.path(), u"org.a11y.atspi.Event.Object"_s, event);
    message.setArguments({detail, value, 0, QVariant::fromValue(QDBusVariant(QVariant::fromValue(source))),
                          QVariant::fromValue(application)});
    bus.send(message);
}

} // namespace

void tellStateOnBus(unsigned int object, const QString& state, bool isSet)
{
    tell(object, u"StateChanged"_s, state, isSet ? 1 : 0);
}

void tellSelectionOnBus(unsigned int object)
{
    tell(object, u"SelectionChanged"_s, {}, 0);
}

} // namespace quillon::platform
