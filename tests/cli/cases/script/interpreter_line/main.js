#!/usr/bin/env -S qxp script
print("runs");
missing();
