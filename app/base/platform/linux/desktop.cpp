#include "app/base/platform/desktop.h"

#include <QFile>

// GIO names members "signals", which is why the project is built without Qt's keywords.
#include <gio/gio.h>

namespace quillon::platform
{

OpenOutcome openWithAssociatedApplication(const QString& path)
{
    const QByteArray name = QFile::encodeName(path);
    GFile* file = g_file_new_for_path(name.constData());
    GError* error = nullptr;
    GAppInfo* application = g_file_query_default_handler(file, nullptr, &error);
    OpenOutcome outcome = OpenOutcome::OtherFailure;
    if (application != nullptr) {
        GList* files = g_list_append(nullptr, file);
        if (g_app_info_launch(application, files, nullptr, &error) != 0)
            outcome = OpenOutcome::Opened;
        g_list_free(files);
        g_object_unref(application);
    } else if (g_error_matches(error, G_IO_ERROR, G_IO_ERROR_NOT_SUPPORTED) != 0) {
        outcome = OpenOutcome::NoAssociation;
    }
    g_clear_error(&error);
    g_object_unref(file);
    return outcome;
}

} // namespace quillon::platform
