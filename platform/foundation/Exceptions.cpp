// NSException. Its virtual destructor is here, so that the type is one for all who throw and catch
// it.
#include <Foundation/Foundation.h>

#include <utility>

NSException::NSException(std::string name, std::string reason)
    : name_(std::move(name)), reason_(std::move(reason)) {}
NSException::NSException(const NSException&) = default;
NSException::~NSException() = default;
