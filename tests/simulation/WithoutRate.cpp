/// A program that needs the control library and does not export SAMP_FREQ: it must not start.
int main()
{
    return 0;
}
