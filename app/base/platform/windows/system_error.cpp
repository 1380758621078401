#include "app/base/platform/system_error.h"

#include <windows.h>

// Not every kit of headers knows it.
#ifndef ERROR_DISK_QUOTA_EXCEEDED
#define ERROR_DISK_QUOTA_EXCEEDED 1295L
#endif

using namespace Qt::Literals::StringLiterals;

namespace quillon::platform
{

int lastSystemError()
{
    return static_cast<int>(GetLastError());
}

std::optional<Error> errorOfLack(int failure)
{
    switch (failure) {
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
        return Error(errors::DiskFull);
    case ERROR_NOT_ENOUGH_QUOTA:
    case ERROR_DISK_QUOTA_EXCEEDED:
        return Error(
            errors::DiskFull,
            u"利用できるディスク容量の上限に達しました。不要なファイルを削除してからやり直してください。"_s);
    case ERROR_FILE_TOO_LARGE:
        return Error(errors::PathFileAccess,
                     u"ファイルの大きさが上限を超えるため書き込めません。別のディスクを使用してください。"_s);
    case ERROR_TOO_MANY_OPEN_FILES:
        return Error(errors::PathFileAccess, u"同時に開けるファイルの数の上限に達しました。"
                                             u"画面や他のアプリケーションを閉じてからやり直してください。"_s);
    case ERROR_NOT_ENOUGH_MEMORY:
    case ERROR_OUTOFMEMORY:
        return Error(errors::OutOfMemory);
    default:
        return std::nullopt;
    }
}

Error errorOfSystem(int failure, qint32 whenMissing)
{
    if (const auto lack = errorOfLack(failure))
        return *lack;
    switch (failure) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_DIRECTORY: // a file where a folder is wanted, or nothing at all
    case ERROR_INVALID_DRIVE:
    case ERROR_INVALID_NAME:
    case ERROR_BAD_NETPATH:
    case ERROR_BAD_NET_NAME:
        return Error(whenMissing);
    case ERROR_WRITE_PROTECT:
        return Error(errors::PermissionDenied,
                     u"ディスクが読み取り専用のため書き込めません。別のディスクを使用してください。"_s);
    case ERROR_ACCESS_DENIED:
        return Error(errors::PermissionDenied);
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
        return Error(
            errors::PermissionDenied,
            u"ファイルは他のプログラムが使用中です。そのプログラムを終了してからやり直してください。"_s);
    default:
        return Error(errors::PathFileAccess);
    }
}

} // namespace quillon::platform
