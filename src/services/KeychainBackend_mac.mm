// Apple platforms: generic-password items through the Security framework.
#include "services/KeychainBackend.h"

#import <Foundation/Foundation.h>
#import <Security/Security.h>

namespace {
NSMutableDictionary* baseQuery(const QString& service, const QString& account) {
    return [@{
        (__bridge id)kSecClass : (__bridge id)kSecClassGenericPassword,
        (__bridge id)kSecAttrService : service.toNSString(),
        (__bridge id)kSecAttrAccount : account.toNSString(),
    } mutableCopy];
}
} // namespace

qint32 KeychainBackend::copyMatching(const QString& service, const QString& account,
                                     std::optional<QByteArray>* data) {
    @autoreleasepool {
        NSMutableDictionary* query = baseQuery(service, account);
        if (!data) {
            return SecItemCopyMatching((__bridge CFDictionaryRef)query, nullptr);
        }
        query[(__bridge id)kSecReturnData] = @YES;
        query[(__bridge id)kSecMatchLimit] = (__bridge id)kSecMatchLimitOne;
        CFTypeRef result = nullptr;
        const OSStatus status = SecItemCopyMatching((__bridge CFDictionaryRef)query, &result);
        if (status == errSecSuccess && result && CFGetTypeID(result) == CFDataGetTypeID()) {
            *data = QByteArray::fromNSData((__bridge NSData*)result);
        } else {
            *data = std::nullopt;
        }
        if (result) {
            CFRelease(result);
        }
        return status;
    }
}

qint32 KeychainBackend::update(const QString& service, const QString& account, const QByteArray& data) {
    @autoreleasepool {
        NSDictionary* changes = @{
            (__bridge id)kSecValueData : data.toNSData(),
            (__bridge id)kSecAttrAccessible : (__bridge id)kSecAttrAccessibleAfterFirstUnlockThisDeviceOnly,
        };
        return SecItemUpdate((__bridge CFDictionaryRef)baseQuery(service, account),
                             (__bridge CFDictionaryRef)changes);
    }
}

qint32 KeychainBackend::add(const QString& service, const QString& account, const QByteArray& data) {
    @autoreleasepool {
        NSMutableDictionary* item = baseQuery(service, account);
        item[(__bridge id)kSecAttrAccessible] = (__bridge id)kSecAttrAccessibleAfterFirstUnlockThisDeviceOnly;
        item[(__bridge id)kSecValueData] = data.toNSData();
        return SecItemAdd((__bridge CFDictionaryRef)item, nullptr);
    }
}

qint32 KeychainBackend::deleteItem(const QString& service, const QString& account) {
    @autoreleasepool {
        return SecItemDelete((__bridge CFDictionaryRef)baseQuery(service, account));
    }
}
