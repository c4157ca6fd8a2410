#include "tls/Certificates.h"

#include <arpa/inet.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

#include <memory>

namespace veldrano::tls {

namespace {

template <class T, void (*Free)(T*)>
struct Deleter {
    void operator()(T* p) const { Free(p); }
};
using Bio = std::unique_ptr<BIO, Deleter<BIO, BIO_free_all>>;
using Key = std::unique_ptr<EVP_PKEY, Deleter<EVP_PKEY, EVP_PKEY_free>>;
using Cert = std::unique_ptr<X509, Deleter<X509, X509_free>>;
using Names = std::unique_ptr<GENERAL_NAMES, Deleter<GENERAL_NAMES, GENERAL_NAMES_free>>;

[[noreturn]] void Fail(const std::string& what) {
    throw std::runtime_error(what);
}

Bio ReadBio(const std::string& text) {
    return Bio(BIO_new_mem_buf(text.data(), static_cast<int>(text.size())));
}

Cert ParseCertificate(const std::string& pem) {
    Bio bio = ReadBio(pem);
    return Cert(PEM_read_bio_X509(bio.get(), nullptr, nullptr, nullptr));
}

std::string ToPem(int (*write)(BIO*, void*), void* object) {
    Bio bio(BIO_new(BIO_s_mem()));
    if (!write(bio.get(), object)) Fail("cannot write a PEM block");
    char* data = nullptr;
    const long size = BIO_get_mem_data(bio.get(), &data);
    return std::string(data, static_cast<size_t>(size));
}

bool IsIpAddress(const std::string& name) {
    unsigned char buffer[16];
    return inet_pton(AF_INET, name.c_str(), buffer) == 1 ||
           inet_pton(AF_INET6, name.c_str(), buffer) == 1;
}

void AddExtension(X509* cert, int nid, const char* value) {
    X509V3_CTX context;
    X509V3_set_ctx_nodb(&context);
    X509V3_set_ctx(&context, cert, cert, nullptr, nullptr, 0);
    X509_EXTENSION* extension = X509V3_EXT_conf_nid(nullptr, &context, nid, value);
    if (!extension || !X509_add_ext(cert, extension, -1))
        Fail("cannot add a certificate extension");
    X509_EXTENSION_free(extension);
}

}  // namespace

Identity CreateSelfSigned(const std::vector<std::string>& names) {
    if (names.empty()) Fail("a certificate needs at least one name");
    Key key(EVP_EC_gen("P-256"));
    if (!key) Fail("cannot generate a key");

    Cert cert(X509_new());
    X509_set_version(cert.get(), 2);
    unsigned char serial[16];
    RAND_bytes(serial, sizeof serial);
    serial[0] &= 0x7F;  // a positive serial number
    BIGNUM* number = BN_bin2bn(serial, sizeof serial, nullptr);
    BN_to_ASN1_INTEGER(number, X509_get_serialNumber(cert.get()));
    BN_free(number);
    X509_gmtime_adj(X509_getm_notBefore(cert.get()), -3600);
    X509_gmtime_adj(X509_getm_notAfter(cert.get()), 10L * 365 * 24 * 3600);
    X509_set_pubkey(cert.get(), key.get());

    X509_NAME* subject = X509_get_subject_name(cert.get());
    X509_NAME_add_entry_by_txt(subject, "CN", MBSTRING_UTF8,
                               reinterpret_cast<const unsigned char*>(names.front().c_str()), -1,
                               -1, 0);
    X509_set_issuer_name(cert.get(), subject);

    std::string alternatives;
    for (const auto& name : names)
        alternatives += (alternatives.empty() ? "" : ",") +
                        std::string(IsIpAddress(name) ? "IP:" : "DNS:") + name;
    AddExtension(cert.get(), NID_subject_alt_name, alternatives.c_str());
    AddExtension(cert.get(), NID_basic_constraints, "critical,CA:FALSE");
    AddExtension(cert.get(), NID_key_usage, "critical,digitalSignature");
    AddExtension(cert.get(), NID_ext_key_usage, "serverAuth");
    if (!X509_sign(cert.get(), key.get(), EVP_sha256())) Fail("cannot sign the certificate");

    Identity identity;
    identity.certificatePem =
        ToPem([](BIO* bio, void* x) { return PEM_write_bio_X509(bio, static_cast<X509*>(x)); },
              cert.get());
    identity.privateKeyPem = ToPem(
        [](BIO* bio, void* k) {
            return PEM_write_bio_PrivateKey(bio, static_cast<EVP_PKEY*>(k), nullptr, nullptr, 0,
                                            nullptr, nullptr);
        },
        key.get());
    return identity;
}

void CheckIdentity(const Identity& identity) {
    Cert cert = ParseCertificate(identity.certificatePem);
    if (!cert) Fail("the certificate file holds no PEM certificate");
    Bio bio = ReadBio(identity.privateKeyPem);
    Key key(PEM_read_bio_PrivateKey(bio.get(), nullptr, nullptr, nullptr));
    if (!key) Fail("the key file holds no PEM private key (or one protected by a passphrase)");
    if (X509_check_private_key(cert.get(), key.get()) != 1)
        Fail("the private key does not belong to the certificate");
}

std::string Fingerprint(const std::string& certificatePem) {
    Cert cert = ParseCertificate(certificatePem);
    if (!cert) return {};
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int size = 0;
    if (!X509_digest(cert.get(), EVP_sha256(), digest, &size)) return {};
    static const char hex[] = "0123456789ABCDEF";
    std::string text;
    for (unsigned int i = 0; i < size; ++i) {
        if (i) text += ':';
        text += hex[digest[i] >> 4];
        text += hex[digest[i] & 15];
    }
    return text;
}

std::string HostNameOf(const std::string& certificatePem) {
    Cert cert = ParseCertificate(certificatePem);
    if (!cert) return {};
    Names names(static_cast<GENERAL_NAMES*>(
        X509_get_ext_d2i(cert.get(), NID_subject_alt_name, nullptr, nullptr)));
    for (int i = 0; names && i < sk_GENERAL_NAME_num(names.get()); ++i) {
        const GENERAL_NAME* name = sk_GENERAL_NAME_value(names.get(), i);
        if (name->type != GEN_DNS) continue;
        const ASN1_IA5STRING* dns = name->d.dNSName;
        return std::string(reinterpret_cast<const char*>(ASN1_STRING_get0_data(dns)),
                           static_cast<size_t>(ASN1_STRING_length(dns)));
    }
    char common[256] = {};
    if (X509_NAME_get_text_by_NID(X509_get_subject_name(cert.get()), NID_commonName, common,
                                  sizeof common) > 0)
        return common;
    return {};
}

}  // namespace veldrano::tls
