// The host's document, which a file set keeps and never looks into.
#pragma once

class CDocument {};
