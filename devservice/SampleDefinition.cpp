#include "SampleDefinition.h"

#include <QXmlStreamWriter>

using namespace Qt::StringLiterals;

QByteArray SampleDefinition::write(const QString &title, const QString &os,
                                   const QList<SampleSegment> &segments)
{
    QByteArray result;
    QXmlStreamWriter writer(&result);
    writer.setAutoFormatting(true);
    writer.writeStartDocument();
    writer.writeStartElement(u"sampledefinition"_s);
    writer.writeAttribute(u"title"_s, title);
    writer.writeAttribute(u"os"_s, os);
    qsizetype offset = 0;
    for (const SampleSegment &segment : segments) {
        writer.writeEmptyElement(u"table"_s);
        writer.writeAttribute(u"name"_s, segment.name);
        writer.writeAttribute(u"offset"_s, QString::number(offset));
        writer.writeAttribute(u"size"_s, QString::number(segment.bytes.size()));
        offset += segment.bytes.size();
    }
    writer.writeEndDocument();
    return result;
}
