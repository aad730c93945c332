"""What the scenario tests are made of: the daemon, its peers and a machine of their own."""
