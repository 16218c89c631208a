// Whether texts are valid against the document's schema, as libxml2's validator sees it.
#pragma once

#include <gtest/gtest.h>

#include <string>

namespace test_support {

// Success when `xml` is a document that is valid against the schema of this build, which another
// test compares with docs/status.xsd.
testing::AssertionResult IsValidDocument(const std::string& xml);

// The same against the schema in `schema`; a failure when that is not a schema.
testing::AssertionResult IsValid(const std::string& xml, const std::string& schema);

}  // namespace test_support
