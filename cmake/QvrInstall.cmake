# Layout of an installation; filled in as the parts arrive.
