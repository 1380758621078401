#include "bench/working_copies.h"

#include "bench/corpora.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <unistd.h>

#include <stdexcept>

using namespace Qt::Literals::StringLiterals;

namespace quillon::bench
{

namespace
{

void copyTo(const QString& path)
{
    QFile file(path);
    if (!QFile::copy(corpusPath(Corpus::Default), path) || !file.open(QIODevice::ReadWrite))
        throw std::runtime_error("the corpus cannot be copied");
    // What has not arrived on the disk yet would have to do so with the first thing that is written.
    if (fsync(file.handle()) != 0)
        throw std::runtime_error("a copy of the corpus cannot be written");
}

} // namespace

const WorkingCopies& workingCopies()
{
    static const QTemporaryDir folder(QFileInfo(corpusPath(Corpus::Default)).path() + u"/copies-XXXXXX"_s);
    static const WorkingCopies copies = [] {
        if (!folder.isValid())
            throw std::runtime_error("there is no folder for copies");
        WorkingCopies made{folder.filePath(u"program.mdb"_s), folder.filePath(u"floor.mdb"_s)};
        copyTo(made.programs);
        copyTo(made.floors);
        return made;
    }();
    return copies;
}

} // namespace quillon::bench
