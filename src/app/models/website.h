#pragma once

#include <QString>
#include <QUrl>

namespace quillet {

class UserDefaults;

// The maker's web pages and mail address, from the settings "HomePage" and
// "ContactAddress", and the maker's products by their number. An empty
// setting gives an empty address, which callers take as "not offered".
class Website {
  public:
    // This application's number in the product table.
    static constexpr int QuilletProductId = 2;

    explicit Website(const UserDefaults& defaults);

    QUrl homePage() const;
    // The home page's address followed by `relative` (a slash between them
    // when the home page has none at its end).
    QUrl page(const QString& relative) const;
    // The product's folder on the site ("<home>quillet/"); empty for a
    // number without a product.
    QUrl productPage(int productId) const;
    // A new mail to the maker.
    QUrl mailTo() const;

    // The product's display name and the folder of its pages; empty for a
    // number without a product.
    static QString productName(int productId);
    static QString productFolder(int productId);

  private:
    QString m_home;
    QString m_mail;
};

} // namespace quillet
