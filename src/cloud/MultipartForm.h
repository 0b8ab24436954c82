#pragma once

#include <QByteArray>
#include <QString>

namespace zivra {

/// The body of a multipart/form-data request (RFC 7578), all text in UTF-8.
///
/// Names, file names and types go into headers as they are: they are constants of ours. What users and files
/// bring along is a value or data, where nothing has a meaning but the boundary, and that is random for each
/// form.
class MultipartForm {
public:
    MultipartForm();

    [[nodiscard]] const QByteArray &boundary() const { return m_boundary; }
    /// For the request's `Content-Type`.
    [[nodiscard]] QByteArray contentType() const;
    /// The parts added so far.
    [[nodiscard]] const QByteArray &body() const { return m_body; }

    void add(const QByteArray &name, const QString &value);
    void addFile(const QByteArray &name, const QByteArray &filename, const QByteArray &mimeType,
                 const QByteArray &data);

    /// The body with its closing line. More can be added afterwards.
    [[nodiscard]] QByteArray finalized() const;

private:
    QByteArray m_boundary;
    QByteArray m_body;
};

} // namespace zivra
