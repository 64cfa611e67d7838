namespace kelmara_placeholder {
int nothing;
}
