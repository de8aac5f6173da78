// What an interface is told about a tree search.
#pragma once

// Connects the tree search to these reports.
void installTreeReports();
