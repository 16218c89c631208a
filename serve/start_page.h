// The page at "/".
#pragma once

namespace serve {

inline constexpr const char* kStartPage = R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width">
<title>Display controller</title>
</head>
<body>
<h1>Display controller</h1>
<ul>
<li><a href="/status.xml">The document as XML</a></li>
<li><a href="/status.json">The document as JSON</a></li>
<li><a href="/insight.json">Sources, rows and findings</a></li>
<li><a href="/metrics">Metrics</a></li>
<li><a href="/healthz">Whether all this can be relied on</a></li>
</ul>
</body>
</html>
)";

}  // namespace serve
