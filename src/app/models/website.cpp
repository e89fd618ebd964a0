#include "app/models/website.h"

#include "settings/settingsschema.h"
#include "settings/userdefaults.h"

namespace quillet {

namespace {

struct Product {
    int id;
    const char* name;
    const char* folder;
};

// The maker's other products are listed by the deployment that sells them.
constexpr Product products[] = {{Website::QuilletProductId, "Quillet", "quillet"}};

const Product* product(int id) {
    for (const Product& p : products)
        if (p.id == id)
            return &p;
    return nullptr;
}

QUrl webAddress(const QString& text) {
    const QUrl url(text, QUrl::StrictMode);
    return url.isValid() && !url.host().isEmpty() ? url : QUrl();
}

} // namespace

Website::Website(const UserDefaults& defaults)
    : m_home(defaults.stringValue(QLatin1String(StoreKey::HomePage)).trimmed()),
      m_mail(defaults.stringValue(QLatin1String(StoreKey::ContactAddress)).trimmed()) {}

QUrl Website::homePage() const {
    return webAddress(m_home);
}

QUrl Website::page(const QString& relative) const {
    if (m_home.isEmpty())
        return {};
    // A home page set without its closing slash still has pages under it.
    const bool slash = m_home.endsWith(QLatin1Char('/')) || relative.isEmpty();
    return webAddress(m_home + (slash ? QString() : QStringLiteral("/")) + relative);
}

QUrl Website::productPage(int productId) const {
    const QString folder = productFolder(productId);
    return folder.isEmpty() ? QUrl() : page(folder + QLatin1Char('/'));
}

QUrl Website::mailTo() const {
    if (!m_mail.contains(QLatin1Char('@')))
        return {};
    QUrl url;
    url.setScheme(QStringLiteral("mailto"));
    url.setPath(m_mail);
    return url;
}

QString Website::productName(int productId) {
    const Product* p = product(productId);
    return p ? QLatin1String(p->name) : QString();
}

QString Website::productFolder(int productId) {
    const Product* p = product(productId);
    return p ? QLatin1String(p->folder) : QString();
}

} // namespace quillet
