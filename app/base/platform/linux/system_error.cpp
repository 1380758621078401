#include "app/base/platform/system_error.h"

#include <cerrno>

using namespace Qt::Literals::StringLiterals;

namespace quillon::platform
{

int lastSystemError()
{
    return errno;
}

std::optional<Error> errorOfLack(int failure)
{
    switch (failure) {
    case ENOSPC:
        return Error(errors::DiskFull);
    case EDQUOT:
        return Error(
            errors::DiskFull,
            u"利用できるディスク容量の上限に達しました。不要なファイルを削除してからやり直してください。"_s);
    case EFBIG:
        return Error(errors::PathFileAccess,
                     u"ファイルの大きさが上限を超えるため書き込めません。別のディスクを使用してください。"_s);
    case EMFILE:
    case ENFILE:
        return Error(errors::PathFileAccess, u"同時に開けるファイルの数の上限に達しました。"
                                             u"画面や他のアプリケーションを閉じてからやり直してください。"_s);
    case ENOMEM:
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
    case ENOENT:
    case ENOTDIR:
        return Error(whenMissing);
    case EACCES:
    case EPERM:
        return Error(errors::PermissionDenied);
    case EROFS:
        return {errors::PermissionDenied,
                u"ディスクが読み取り専用のため書き込めません。別のディスクを使用してください。"_s};
    case ENAMETOOLONG:
        return {errors::PathFileAccess,
                u"ファイルまたはフォルダの名前が長すぎます。短い名前に変えてからやり直してください。"_s};
    default:
        return Error(errors::PathFileAccess);
    }
}

} // namespace quillon::platform
