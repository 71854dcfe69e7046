#pragma once

#include <QString>

#include <iostream>
#include <sstream>

/// Takes what goes to std::cerr as long as it lives.
class CapturedErrors
{
public:
    CapturedErrors() : previous(std::cerr.rdbuf(captured.rdbuf())) {}
    ~CapturedErrors() { std::cerr.rdbuf(previous); }
    CapturedErrors(const CapturedErrors&) = delete;
    CapturedErrors& operator=(const CapturedErrors&) = delete;

    QString text() const { return QString::fromLocal8Bit(captured.str().c_str()); }

private:
    std::ostringstream captured;
    std::streambuf* previous;
};
