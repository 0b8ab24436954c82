#include "cloud/MultipartForm.h"

#include <QUuid>

namespace zivra {

MultipartForm::MultipartForm()
    : m_boundary("ZivraBoundary-" + QUuid::createUuid().toByteArray(QUuid::WithoutBraces).toUpper())
{
}

QByteArray MultipartForm::contentType() const
{
    return "multipart/form-data; boundary=" + m_boundary;
}

void MultipartForm::add(const QByteArray &name, const QString &value)
{
    m_body += "--" + m_boundary + "\r\n";
    m_body += "Content-Disposition: form-data; name=\"" + name + "\"\r\n\r\n";
    m_body += value.toUtf8() + "\r\n";
}

void MultipartForm::addFile(const QByteArray &name, const QByteArray &filename, const QByteArray &mimeType,
                            const QByteArray &data)
{
    m_body += "--" + m_boundary + "\r\n";
    m_body += "Content-Disposition: form-data; name=\"" + name + "\"; filename=\"" + filename + "\"\r\n";
    m_body += "Content-Type: " + mimeType + "\r\n\r\n";
    m_body += data + "\r\n";
}

QByteArray MultipartForm::finalized() const
{
    return m_body + "--" + m_boundary + "--\r\n";
}

} // namespace zivra
