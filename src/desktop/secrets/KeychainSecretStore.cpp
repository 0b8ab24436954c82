#include "desktop/secrets/KeychainSecretStore.h"

#include "desktop/secrets/LockedSecrets.h"

#include <QPromise>
#include <qt6keychain/keychain.h>

#include <memory>

namespace zivra::desktop {

namespace {

/// One answer to a caller: the given one, or a default one from an end without any.
template <typename Answer>
class Reply {
public:
    Reply() { m_promise.start(); }
    ~Reply() { give({}); }
    Q_DISABLE_COPY_MOVE(Reply)

    [[nodiscard]] QFuture<Answer> future() const { return m_promise.future(); }
    void give(const Answer &answer)
    {
        if (!m_given) {
            m_given = true;
            m_promise.addResult(answer);
            m_promise.finish();
        }
    }

private:
    QPromise<Answer> m_promise;
    bool m_given = false;
};

/// Starts a job that deletes itself at its end.
template <typename Job, typename Finished>
void run(std::unique_ptr<Job> job, QObject *owner, const QString &account, Finished finished)
{
    Job *running = job.release();
    running->setParent(owner);
    running->setKey(account);
    running->setInsecureFallback(false); // never a file instead of a vault
    QObject::connect(running, &QKeychain::Job::finished, owner, [running, finished] { finished(*running); });
    running->start();
}

SecretAnswer answerOf(const QKeychain::ReadPasswordJob &job)
{
    switch (job.error()) {
    case QKeychain::NoError:
        return {SecretAnswer::Outcome::Found, job.binaryData()};
    case QKeychain::EntryNotFound:
        return {hasLockedSecret(job.service(), job.key()) ? SecretAnswer::Outcome::Unavailable
                                                          : SecretAnswer::Outcome::None,
                {}};
    default:
        return {SecretAnswer::Outcome::Unavailable, {}};
    }
}

} // namespace

KeychainSecretStore::KeychainSecretStore()
{
    m_jobs.moveToThread(&m_thread);
    m_thread.setObjectName(QStringLiteral("zivra.secrets"));
    m_thread.start();
}

KeychainSecretStore::~KeychainSecretStore()
{
    m_thread.quit();
    m_thread.wait();
}

QFuture<SecretAnswer> KeychainSecretStore::read(const QString &service, const QString &account)
{
    const auto reply = std::make_shared<Reply<SecretAnswer>>();
    inThread([jobs = &m_jobs, service, account, reply] {
        run(std::make_unique<QKeychain::ReadPasswordJob>(service), jobs, account,
            [reply](const QKeychain::ReadPasswordJob &job) { reply->give(answerOf(job)); });
    });
    return reply->future();
}

QFuture<bool> KeychainSecretStore::write(const QString &service, const QString &account,
                                         const QByteArray &value)
{
    const auto reply = std::make_shared<Reply<bool>>();
    inThread([jobs = &m_jobs, service, account, value, reply] {
        auto job = std::make_unique<QKeychain::WritePasswordJob>(service);
        job->setTextData(QString::fromUtf8(value));
        run(std::move(job), jobs, account, [reply](const QKeychain::WritePasswordJob &written) {
            reply->give(written.error() == QKeychain::NoError);
        });
    });
    return reply->future();
}

QFuture<bool> KeychainSecretStore::remove(const QString &service, const QString &account)
{
    const auto reply = std::make_shared<Reply<bool>>();
    inThread([jobs = &m_jobs, service, account, reply] {
        run(std::make_unique<QKeychain::DeletePasswordJob>(service), jobs, account,
            [reply](const QKeychain::DeletePasswordJob &job) {
                // What is locked stays, without an error.
                const bool done =
                    job.error() == QKeychain::NoError || job.error() == QKeychain::EntryNotFound;
                reply->give(done && !hasLockedSecret(job.service(), job.key()));
            });
    });
    return reply->future();
}

void KeychainSecretStore::inThread(std::function<void()> work)
{
    QMetaObject::invokeMethod(&m_jobs, std::move(work), Qt::QueuedConnection);
}

} // namespace zivra::desktop
